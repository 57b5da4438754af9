/// GUIDs: layout, comparison and definition.
#pragma once

#include <cstring>

#include "windef.h"

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4);

using IID = GUID;
using CLSID = GUID;
using FMTID = GUID;
using REFGUID = GUID const&;
using REFIID = IID const&;
using REFCLSID = CLSID const&;
using REFFMTID = FMTID const&;
using LPIID = IID*;
using LPCLSID = CLSID*;

inline bool IsEqualGUID(REFGUID left, REFGUID right) {
    return std::memcmp(&left, &right, sizeof(GUID)) == 0;
}
inline bool operator==(REFGUID left, REFGUID right) {
    return IsEqualGUID(left, right);
}
inline bool operator!=(REFGUID left, REFGUID right) {
    return !IsEqualGUID(left, right);
}
#define IsEqualIID(left, right) IsEqualGUID(left, right)
#define IsEqualCLSID(left, right) IsEqualGUID(left, right)

/// Declares a GUID, or defines it where INITGUID is set before the include.
#ifdef INITGUID
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
    EXTERN_C GUID const name;                                        \
    EXTERN_C GUID const name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}}
#else
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) EXTERN_C GUID const name
#endif

EXTERN_C VELK_LAYER_EXPORT GUID const GUID_NULL;
#define IID_NULL GUID_NULL
#define CLSID_NULL GUID_NULL
