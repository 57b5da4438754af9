#pragma once

#include <windows.h>

#include <oleauto.h>

namespace velk::adapter {

/// The value at the end of a chain of references to VARIANTs; null when the
/// chain ends at a null pointer or runs in a circle.
inline VARIANT const* followReferences(VARIANT const* value) noexcept {
    // The trailing pointer goes half as fast: in a circle the two meet.
    VARIANT const* trailing = value;
    for (bool trailingMoves = false; value && value->vt == (VT_BYREF | VT_VARIANT);
         trailingMoves = !trailingMoves) {
        value = value->pvarVal;
        if (trailingMoves) trailing = trailing->pvarVal;
        if (value == trailing) return nullptr;
    }
    return value;
}

}  // namespace velk::adapter
