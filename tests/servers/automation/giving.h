/// Handing values out of members.
#pragma once

#include "com/error.h"
#include "com/owners.h"

namespace velk::test::server {

/// A value that owns nothing. E_POINTER.
template <typename Value>
HRESULT give(Value* out, Value value) noexcept {
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
}

/// A reference to an object, or null. E_POINTER.
template <typename Interface>
HRESULT giveObject(Interface** out, Interface* object) noexcept {
    return out ? give(out, com::ComPtr<Interface>(object).copy()) : E_POINTER;
}

/// A copy of `text`. E_POINTER, E_OUTOFMEMORY.
inline HRESULT giveText(BSTR* out, com::TextView text) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    try {
        *out = com::makeBstr(text).release();
        return S_OK;
    }
    VELK_COM_CATCH
}

/// A copy of `value`, read through a reference. E_POINTER, or VariantCopyInd's.
inline HRESULT giveVariant(VARIANT* out, VARIANT const& value) noexcept {
    if (!out) return E_POINTER;
    VariantInit(out);
    // Some declarations take a source that they do not change without const.
    return VariantCopyInd(out, const_cast<VARIANT*>(&value));
}

/// A text as a value.
inline com::Variant textVariant(com::TextView text) {
    com::Variant value;
    value.address()->bstrVal = com::makeBstr(text).release();
    value.address()->vt = VT_BSTR;
    return value;
}

inline com::Variant numberVariant(LONG number) noexcept {
    com::Variant value;
    value.address()->vt = VT_I4;
    value.address()->lVal = number;
    return value;
}

}  // namespace velk::test::server
