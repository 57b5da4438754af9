#include "key_list.h"

#include <algorithm>

#include "com/error.h"

namespace sampleserver {

using namespace velk;

com::ComPtr<IEnumVARIANT> KeyList::make(std::vector<Text> keys, std::size_t next) {
    com::CComObject<KeyList>* list = nullptr;
    com::throwIfFailed(com::newObject<com::CComObject<KeyList>>(nullptr, list));
    com::ComPtr<IEnumVARIANT> made(list);
    list->keys_ = std::move(keys);
    list->next_ = next;
    return made;
}

HRESULT KeyList::Next(ULONG count, VARIANT* values, ULONG* fetched) noexcept {
    // Only who asks for one element may leave `fetched` out.
    if (!values || (!fetched && count != 1)) return E_POINTER;
    ULONG given = 0;
    if (fetched) *fetched = 0;
    try {
        while (given < count && next_ < keys_.size()) {
            BSTR const text = com::makeBstr(keys_[next_]).release();
            VariantInit(&values[given]);
            values[given].vt = VT_BSTR;
            values[given].bstrVal = text;
            ++next_;
            if (fetched) *fetched = given + 1;
            ++given;
        }
        return given == count ? S_OK : S_FALSE;
    }
    VELK_COM_CATCH
}

HRESULT KeyList::Skip(ULONG count) noexcept {
    std::size_t const left = keys_.size() - next_;
    next_ += std::min<std::size_t>(left, count);
    return count <= left ? S_OK : S_FALSE;
}

HRESULT KeyList::Reset() noexcept {
    next_ = 0;
    return S_OK;
}

HRESULT KeyList::Clone(IEnumVARIANT** out) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    try {
        *out = make(keys_, next_).detach();
        return S_OK;
    }
    VELK_COM_CATCH
}

}  // namespace sampleserver
