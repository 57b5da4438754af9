/// Which type codes a VARIANT may carry, and how many bytes their values take.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// Whether a VARIANT may carry the code `type` at all, VT_BYREF and VT_ARRAY
/// included. VariantClear and VariantCopy refuse every other code.
bool isVariantType(VARTYPE type) noexcept;

/// Bytes of a value of `type` in memory: of an element of an array, behind a
/// reference, in a record. 0 for what has no values of its own, and for records.
ULONG sizeOfType(VARTYPE type) noexcept;

/// The code without VT_BYREF, VT_ARRAY and the other modifiers.
constexpr VARTYPE baseType(VARTYPE type) noexcept {
    return type & VT_TYPEMASK;
}

constexpr bool isByReference(VARTYPE type) noexcept {
    return (type & VT_BYREF) != 0;
}
constexpr bool isArray(VARTYPE type) noexcept {
    return (type & VT_ARRAY) != 0;
}

}  // namespace velk::platform
