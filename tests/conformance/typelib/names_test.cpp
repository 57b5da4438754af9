// Names turned into identifiers and back, and bound as compilers bind them.

#include <gtest/gtest.h>

#include "shapes.h"

namespace velk::test {
namespace {

TEST(Names, BecomeIdentifiersOfMembersAndParameters) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder2"));
    Wide member = OLESTR("ADD");
    Wide parameter = OLESTR("Right");
    Wide unknown = OLESTR("middle");
    LPOLESTR names[] = {member.data(), parameter.data(), unknown.data()};
    MEMBERID ids[3] = {};
    // Add belongs to the base.
    EXPECT_EQ(type->GetIDsOfNames(names, 2, ids), S_OK);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[1], 1);
    EXPECT_EQ(type->GetIDsOfNames(names, 3, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], 1);
    EXPECT_EQ(ids[2], DISPID_UNKNOWN);
    EXPECT_EQ(type->GetIDsOfNames(&names[2], 1, ids), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(ids[0], DISPID_UNKNOWN);
    EXPECT_EQ(DispGetIDsOfNames(type.get(), names, 1, ids), S_OK);
}

TEST(Names, OfAFunctionComeWithItsParameters) {
    auto const library = loadShapes();
    auto const view = otherView(typeNamed(library.get(), OLESTR("IRecorder")).get());
    BSTR names[8] = {};
    UINT count = 0;
    ASSERT_EQ(view->GetNames(1, names, 8, &count), S_OK);
    ASSERT_EQ(count, 4u);
    EXPECT_EQ(taken(names[0]), OLESTR("Add"));
    EXPECT_EQ(taken(names[1]), OLESTR("left"));
    EXPECT_EQ(taken(names[2]), OLESTR("right"));
    taken(names[3]);
    ASSERT_EQ(view->GetNames(1, names, 1, &count), S_OK);
    EXPECT_EQ(count, 1u);
    taken(names[0]);
    EXPECT_EQ(view->GetNames(4711, names, 8, &count), TYPE_E_ELEMENTNOTFOUND);
}

TEST(Names, BindToMembers) {
    auto const library = loadShapes();
    auto const type = typeNamed(library.get(), OLESTR("IRecorder"));
    ITypeComp* rawBinder = nullptr;
    ASSERT_EQ(type->GetTypeComp(&rawBinder), S_OK);
    Owned<ITypeComp> const binder(rawBinder);
    Wide name = OLESTR("title");
    ULONG const hash = LHashValOfNameSys(SYS_WIN64, 0x0407, name.c_str());
    ITypeInfo* found = nullptr;
    DESCKIND kind = DESCKIND_NONE;
    BINDPTR bound = {};
    ASSERT_EQ(binder->Bind(name.data(), hash, INVOKE_PROPERTYPUT, &found, &kind, &bound), S_OK);
    ASSERT_EQ(kind, DESCKIND_FUNCDESC);
    EXPECT_EQ(bound.lpfuncdesc->invkind, INVOKE_PROPERTYPUT);
    found->ReleaseFuncDesc(bound.lpfuncdesc);
    found->Release();
    EXPECT_EQ(binder->Bind(name.data(), hash, INVOKE_FUNC, &found, &kind, &bound),
              TYPE_E_TYPEMISMATCH);
    Wide unknown = OLESTR("nothing");
    ASSERT_EQ(binder->Bind(unknown.data(), 0, 0, &found, &kind, &bound), S_OK);
    EXPECT_EQ(kind, DESCKIND_NONE);
}

TEST(Names, BindToConstantsAndTypesAtTheLibrary) {
    auto const library = loadShapes();
    ITypeComp* rawBinder = nullptr;
    ASSERT_EQ(library->GetTypeComp(&rawBinder), S_OK);
    Owned<ITypeComp> const binder(rawBinder);
    Wide constant = OLESTR("Green");
    ITypeInfo* found = nullptr;
    DESCKIND kind = DESCKIND_NONE;
    BINDPTR bound = {};
    ASSERT_EQ(binder->Bind(constant.data(), 0, 0, &found, &kind, &bound), S_OK);
    ASSERT_EQ(kind, DESCKIND_VARDESC);
    EXPECT_EQ(bound.lpvardesc->lpvarValue->lVal, 7);
    found->ReleaseVarDesc(bound.lpvardesc);
    found->Release();
    Wide typeName = OLESTR("Point");
    ITypeComp* none = nullptr;
    found = nullptr;
    ASSERT_EQ(binder->BindType(typeName.data(), 0, &found, &none), S_OK);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(nameOf(found), OLESTR("Point"));
    found->Release();
}

TEST(Names, HashWithoutRegardToCase) {
    EXPECT_EQ(LHashValOfNameSys(SYS_WIN64, 0x0409, OLESTR("Title")),
              LHashValOfNameSys(SYS_WIN64, 0x0409, OLESTR("tITLE")));
    EXPECT_NE(LHashValOfNameSys(SYS_WIN64, 0x0409, OLESTR("Title")),
              LHashValOfNameSys(SYS_WIN64, 0x0409, OLESTR("Titles")));
}

}  // namespace
}  // namespace velk::test
