#include "type_access.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace velk::test {

Owned<ITypeLib> loadLibrary(char const* path) {
    auto const file = std::filesystem::path(path).string<OLECHAR>();
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadTypeLibEx(file.c_str(), REGKIND_NONE, &library), S_OK);
    return Owned<ITypeLib>(library);
}

Owned<ITypeInfo> typeNamed(ITypeLib* library, OLECHAR const* name) {
    for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
        ITypeInfo* raw = nullptr;
        EXPECT_EQ(library->GetTypeInfo(i, &raw), S_OK);
        Owned<ITypeInfo> type(raw);
        if (nameOf(raw) == name) return type;
    }
    ADD_FAILURE() << "the library has no such type";
    return nullptr;
}

Owned<ITypeInfo> otherView(ITypeInfo* type) {
    HREFTYPE reference = 0;
    EXPECT_EQ(type->GetRefTypeOfImplType(static_cast<UINT>(-1), &reference), S_OK);
    ITypeInfo* view = nullptr;
    EXPECT_EQ(type->GetRefTypeInfo(reference, &view), S_OK);
    return Owned<ITypeInfo>(view);
}

Wide nameOf(ITypeInfo* type, MEMBERID member) {
    BSTR name = nullptr;
    EXPECT_EQ(type->GetDocumentation(member, &name, nullptr, nullptr, nullptr), S_OK);
    return taken(name);
}

Wide taken(BSTR text) {
    Wide result = text ? Wide(text, SysStringLen(text)) : Wide();
    SysFreeString(text);
    return result;
}

Attributes attributesOf(ITypeInfo* type) {
    TYPEATTR* attributes = nullptr;
    EXPECT_EQ(type->GetTypeAttr(&attributes), S_OK);
    return {attributes, {type}};
}

}  // namespace velk::test
