/// What the layer decides where the published text leaves a choice, and what
/// the real system does but not every other one.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <oleauto.h>
#include <sys/stat.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

HRESULT create(REFCLSID id, IUnknown*& object) {
    object = nullptr;
    return CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown,
                            reinterpret_cast<void**>(&object));
}

TEST(ClassObjectsHere, AnUnusableModuleGivesTheSystemsReason) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    auto const text = std::filesystem::temp_directory_path() / "velktest_no_module.so";
    std::ofstream(text) << "this is no shared object, however long it may be";
    auto const pipe = std::filesystem::temp_directory_path() / "velktest_pipe.so";
    mkfifo(pipe.c_str(), 0600);
    struct Case {
        char const* what;
        Text path;
        HRESULT expected;
    };
    Case const cases[] = {
        {"no such file", serverPath(OLESTR("missing")), HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND)},
        {"no shared object", text.u16string(), HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)},
        {"a pipe", pipe.u16string(), HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)},
        {"a folder", OLESTR("/tmp"), HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)},
        {"a device", OLESTR("/dev/zero"), HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)},
        {"no entry points", serverPath(OLESTR("velktest_no_entry_points")), CO_E_ERRORINDLL},
        {"empty path", OLESTR(""), REGDB_E_CLASSNOTREG},
    };
    for (auto const& entry : cases) {
        RegisteredClass const registered(plainClass, entry.path);
        IUnknown* object = nullptr;
        EXPECT_EQ(create(plainClass, object), entry.expected) << entry.what;
        EXPECT_EQ(object, nullptr);
    }
    EXPECT_EQ(LoadLibraryExW(pipe.u16string().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
    ITypeLib* library = nullptr;
    EXPECT_EQ(LoadTypeLib(pipe.u16string().c_str(), &library), TYPE_E_CANTLOADLIBRARY);
    EXPECT_EQ(GetModuleHandleW(OLESTR("velktest_no_entry_points")), nullptr)
        << "a module without classes is not kept";
    std::filesystem::remove(text);
    std::filesystem::remove(pipe);
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
