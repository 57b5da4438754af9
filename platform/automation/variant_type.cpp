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

ULONG sizeOfType(VARTYPE type) noexcept {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return 8;
        case VT_BSTR:
        case VT_UNKNOWN:
        case VT_DISPATCH:
        case VT_INT_PTR:
        case VT_UINT_PTR:
            return sizeof(void*);
        case VT_DECIMAL:
            return sizeof(DECIMAL);
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

}  // namespace velk::platform
