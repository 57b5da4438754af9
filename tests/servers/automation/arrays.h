/// Making arrays without leaking them.
#pragma once

#include "com/error.h"
#include "com/owners.h"

namespace velk::test::server {

/// A vector from 0. Throws com::Error(E_OUTOFMEMORY).
inline com::SafeArray makeVector(VARTYPE type, ULONG count) {
    com::SafeArray array(SafeArrayCreateVector(type, 0, count));
    if (!array.get()) throw com::Error(E_OUTOFMEMORY);
    return array;
}

/// Its elements; they are the array's.
template <typename Element>
Element* elementsOf(com::SafeArray const& array) {
    return static_cast<Element*>(array.get()->pvData);
}

/// Hands out what `make` returns. E_POINTER for a null `out`, else the failure
/// that `make` threw.
template <typename Make>
HRESULT giveArray(SAFEARRAY** out, Make make) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    try {
        *out = make().release();
        return S_OK;
    }
    VELK_COM_CATCH
}

}  // namespace velk::test::server
