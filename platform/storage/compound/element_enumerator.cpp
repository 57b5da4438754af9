#include "platform/storage/compound/element_enumerator.h"

#include <algorithm>

#include <objbase.h>

#include "platform/storage/compound/element_status.h"
#include "platform/storage/storage_error.h"

namespace velk::platform::storage {

HRESULT ElementEnumerator::Next(ULONG count, STATSTG* elements, ULONG* done) noexcept {
    if (done != nullptr) *done = 0;
    if (elements == nullptr) return STG_E_INVALIDPOINTER;
    if (done == nullptr && count != 1) return STG_E_INVALIDPARAMETER;
    ULONG given = 0;
    HRESULT const result = answer([&] {
        for (; given < count && at_ + given < elements_.size(); ++given) {
            Entry const& entry = elements_[at_ + given];
            describe(entry, entry.name, 0, STATFLAG_DEFAULT, &elements[given]);
        }
    });
    if (FAILED(result)) {
        for (ULONG i = 0; i < given; ++i) CoTaskMemFree(elements[i].pwcsName);
        return result;
    }
    at_ += given;
    if (done != nullptr) *done = given;
    return given == count ? S_OK : S_FALSE;
}

HRESULT ElementEnumerator::Skip(ULONG count) noexcept {
    auto const skipped = std::min<std::size_t>(count, elements_.size() - at_);
    at_ += skipped;
    return skipped == count ? S_OK : S_FALSE;
}

HRESULT ElementEnumerator::Reset() noexcept {
    at_ = 0;
    return S_OK;
}

HRESULT ElementEnumerator::Clone(IEnumSTATSTG** clone) noexcept {
    if (clone == nullptr) return STG_E_INVALIDPOINTER;
    *clone = nullptr;
    return answer([&] {
        auto* const copy = new ElementEnumerator(elements_);
        copy->at_ = at_;
        *clone = copy;
    });
}

}  // namespace velk::platform::storage
