/// The library of shapes that the tests load.
#pragma once

#include <filesystem>

#include <gtest/gtest.h>

#include <windows.h>

#include "com/com_ptr.h"
#include "support/value_notation.h"

namespace velk::test {

using com::ComPtr;
using Wide = std::basic_string<OLECHAR>;

/// The path of the file that the build made.
inline Wide shapesPath() {
    return std::filesystem::path(VELK_SHAPES_TLB).string<OLECHAR>();
}

/// A loaded library; a failure fails the running test.
inline ComPtr<ITypeLib> loadShapes(std::filesystem::path const& file = VELK_SHAPES_TLB) {
    ComPtr<ITypeLib> library;
    EXPECT_EQ(LoadTypeLibEx(file.string<OLECHAR>().c_str(), REGKIND_NONE, library.put()), S_OK);
    return library;
}

/// An identifier of the library: they differ in their last byte.
inline GUID shapesId(BYTE last) {
    return {0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, last}};
}

inline std::string textOf(BSTR text) {
    return text ? narrow(text, SysStringLen(text)) : "null";
}

inline std::string nameOf(ITypeInfo& type) {
    Value name;
    name->vt = VT_BSTR;
    EXPECT_EQ(type.GetDocumentation(MEMBERID_NIL, &name->bstrVal, nullptr, nullptr, nullptr), S_OK);
    return textOf(name->bstrVal);
}

/// A type by its name; " vtable" behind it asks for its other view.
inline ComPtr<ITypeInfo> typeNamed(ITypeLib& library, std::string const& name) {
    std::string const plain = name.substr(0, name.find(' '));
    ComPtr<ITypeInfo> type;
    for (UINT i = 0; i < library.GetTypeInfoCount(); ++i) {
        EXPECT_EQ(library.GetTypeInfo(i, type.put()), S_OK);
        if (nameOf(*type) != plain) continue;
        if (plain == name) return type;
        HREFTYPE view = 0;
        ComPtr<ITypeInfo> other;
        EXPECT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &view), S_OK);
        EXPECT_EQ(type->GetRefTypeInfo(view, other.put()), S_OK);
        return other;
    }
    throw std::out_of_range("no type " + name);
}

}  // namespace velk::test
