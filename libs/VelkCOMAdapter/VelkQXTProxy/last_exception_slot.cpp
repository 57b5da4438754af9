#include "VelkQXTProxy/last_exception_slot.h"

#include <memory>

#include "host/tls.h"

namespace velk::adapter {
namespace {

void destroyHolder(void* holder) {
    std::unique_ptr<mzComPtrC>(static_cast<mzComPtrC*>(holder));
}

}  // namespace

LastExceptionSlot::LastExceptionSlot() : slot_(mzTlsAlloc(&destroyHolder)) {}

LastExceptionSlot::~LastExceptionSlot() {
    if (slot_ != 0) mzTlsFree(slot_);
    slot_ = 0;
}

mzComPtrC* LastExceptionSlot::holder() {
    void** const value = mzTlsGet(slot_);
    if (!value) return nullptr;
    if (!*value) *value = std::make_unique<mzComPtrC>().release();
    return static_cast<mzComPtrC*>(*value);
}

}  // namespace velk::adapter
