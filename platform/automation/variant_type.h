/// Which type codes a VARIANT may carry.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// Whether a VARIANT may carry the code `type` at all, VT_BYREF and VT_ARRAY
/// included. VariantClear and VariantCopy refuse every other code.
bool isVariantType(VARTYPE type) noexcept;

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
