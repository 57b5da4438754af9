/// What the layer decides where the published text leaves a choice, and what
/// the real system does but not every other one.
#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

HRESULT create(REFCLSID id, IUnknown*& object) {
    object = nullptr;
    return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                            reinterpret_cast<void**>(&object));
}

TEST(ClassObjectsHere, ASuccessWithoutObjectIsAFailure) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    RegisteredClass const registered(emptySuccessClass, serverPath(OLESTR("velktest_classes")));
    IUnknown* object = nullptr;
    EXPECT_EQ(create(emptySuccessClass, object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
}

TEST(ClassObjectsHere, TheUsersClassGoesFirst) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    RegisteredClass const machine(plainClass, OLESTR("/nowhere/machine.so"));
    IUnknown* object = nullptr;
    EXPECT_EQ(create(plainClass, object), HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    RegisteredClass const user(plainClass, serverPath(OLESTR("velktest_classes")), OLESTR("Both"),
                               HKEY_CURRENT_USER);
    ASSERT_EQ(create(plainClass, object), S_OK);
    object->Release();
}

TEST(ClassObjectsHere, TheCurrentVersionIsFollowed) {
    struct Entry {
        OLECHAR const* key;
        Text value;
    };
    Entry const entries[] = {
        {OLESTR("VelkTest.One\\CurVer"), OLESTR("VelkTest.One.2")},
        {OLESTR("VelkTest.One.2\\CLSID"), idText(plainClass)},
        {OLESTR("VelkTest.Own\\CurVer"), OLESTR("VelkTest.One.2")},
        {OLESTR("VelkTest.Own\\CLSID"), idText(lonelyClass)},
        {OLESTR("VelkTest.Circle\\CurVer"), OLESTR("VelkTest.Circle")},
        {OLESTR("VelkTest.Nowhere\\CurVer"), OLESTR("VelkTest.Nothing")},
    };
    for (auto const& entry : entries) setClassesText(entry.key, nullptr, entry.value);
    struct Case {
        OLECHAR const* progId;
        HRESULT expected;
        GUID id;
    };
    Case const cases[] = {
        {OLESTR("VelkTest.One"), S_OK, plainClass},
        {OLESTR("VelkTest.Own"), S_OK, lonelyClass},
        {OLESTR("VelkTest.Circle"), CO_E_CLASSSTRING, GUID_NULL},
        {OLESTR("VelkTest.Nowhere"), CO_E_CLASSSTRING, GUID_NULL},
    };
    for (auto const& entry : cases) {
        GUID id{};
        EXPECT_EQ(CLSIDFromProgID(entry.progId, &id), entry.expected);
        EXPECT_EQ(id, entry.id);
    }
    for (auto const& entry : entries)
        deleteClassesKey(Text(entry.key).substr(0, Text(entry.key).find(u'\\')));
}

TEST(ClassObjectsHere, ReservedArgumentsMustBeAbsent) {
    EXPECT_EQ(CoInitializeEx(reinterpret_cast<void*>(1), 0), E_INVALIDARG);
    EXPECT_EQ(CoInitializeEx(nullptr, 0x100), E_INVALIDARG);
}

}  // namespace
