/// Names of the result codes that tables of this family mention.
#pragma once

#include <cstdio>
#include <string>

#include <windows.h>

namespace velk::test {

inline std::string codeName(HRESULT code) {
#define VELK_NAMED(name) \
    if (code == name) return #name
    VELK_NAMED(S_OK);
    VELK_NAMED(E_ACCESSDENIED);
    VELK_NAMED(E_INVALIDARG);
    VELK_NAMED(E_NOTIMPL);
    VELK_NAMED(DISP_E_BADPARAMCOUNT);
    VELK_NAMED(DISP_E_EXCEPTION);
    VELK_NAMED(DISP_E_MEMBERNOTFOUND);
    VELK_NAMED(DISP_E_OVERFLOW);
    VELK_NAMED(DISP_E_PARAMNOTFOUND);
    VELK_NAMED(DISP_E_PARAMNOTOPTIONAL);
    VELK_NAMED(DISP_E_TYPEMISMATCH);
    VELK_NAMED(DISP_E_UNKNOWNNAME);
    VELK_NAMED(TYPE_E_BADMODULEKIND);
    VELK_NAMED(TYPE_E_CANTLOADLIBRARY);
    VELK_NAMED(TYPE_E_ELEMENTNOTFOUND);
    VELK_NAMED(TYPE_E_INVDATAREAD);
    VELK_NAMED(TYPE_E_LIBNOTREGISTERED);
    VELK_NAMED(TYPE_E_UNSUPFORMAT);
    VELK_NAMED(TYPE_E_WRONGTYPEKIND);
#undef VELK_NAMED
    char digits[11];
    std::snprintf(digits, sizeof digits, "%08X", static_cast<unsigned>(code));
    return digits;
}

}  // namespace velk::test
