#include "servers/automation/call_record.h"

#include "servers/automation/arrays.h"

namespace velk::test::server {

void CallRecord::add(WORD flags, DISPPARAMS const* parameters) {
    auto call = describeCall(flags, parameters);
    std::lock_guard const guard(mutex_);
    calls_.push_back(std::move(call));
}

void CallRecord::clear() noexcept {
    std::lock_guard const guard(mutex_);
    calls_.clear();
}

HRESULT CallRecord::give(SAFEARRAY** calls) const noexcept {
    return giveArray(calls, [this] {
        std::lock_guard const guard(mutex_);
        auto array = makeVector(VT_BSTR, static_cast<ULONG>(calls_.size()));
        auto* const texts = elementsOf<BSTR>(array);
        for (std::size_t i = 0; i < calls_.size(); ++i) {
            texts[i] = com::makeBstr(calls_[i]).release();
        }
        return array;
    });
}

}  // namespace velk::test::server
