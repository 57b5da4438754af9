#include "variant_type.h"

namespace velk::platform {

bool isVariantType(VARTYPE type) noexcept {
    VARTYPE const modifiers = type & ~VT_TYPEMASK;
    VARTYPE const base = baseType(type);
    if ((modifiers & ~(VT_BYREF | VT_ARRAY)) != 0) return false;
    switch (base) {
        case VT_EMPTY:
        case VT_NULL:
            // Neither an array of nothing nor a reference to nothing.
            return modifiers == 0;
        case VT_RECORD:
            return true;
        case 15:
            return false;
        default:
            return base <= VT_UINT;
    }
}

}  // namespace velk::platform
