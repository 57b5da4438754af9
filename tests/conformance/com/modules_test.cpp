#include <thread>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

int const someVariable = 0;

Text const& serverFile() {
    static Text const path = serverPath(OLESTR("velktest_classes"));
    return path;
}

TEST(Modules, ALoadedModuleIsFoundUntilItIsFreed) {
    HMODULE const module = LoadLibraryW(serverFile().c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(serverFile().c_str()), module);
    EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), module);
    EXPECT_EQ(GetModuleHandleW(OLESTR("velktest_classes")), module);
    auto const function = GetProcAddress(module, "DllCanUnloadNow");
    ASSERT_NE(function, nullptr);
    HMODULE around = nullptr;
    EXPECT_TRUE(GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(function), &around));
    EXPECT_EQ(around, module);

    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), module) << "one reference is left";
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), nullptr);
    EXPECT_FALSE(FreeLibrary(module));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, AHandleWithAReferenceKeepsTheModule) {
    HMODULE const module = LoadLibraryW(serverFile().c_str());
    HMODULE again = nullptr;
    ASSERT_TRUE(GetModuleHandleExW(0, serverFile().c_str(), &again));
    EXPECT_EQ(again, module);
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_NE(GetProcAddress(module, "DllGetClassObject"), nullptr);
    EXPECT_TRUE(FreeLibrary(again));
    EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), nullptr);
}

TEST(Modules, TheProgramIsAModule) {
    HMODULE const program = GetModuleHandleW(nullptr);
    ASSERT_NE(program, nullptr);
    HMODULE around = nullptr;
    EXPECT_TRUE(GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&someVariable), &around));
    EXPECT_EQ(around, program);
}

TEST(Modules, FailuresHaveTheirNumbers) {
    struct Case {
        Text path;
        DWORD expected;
    };
    Case const cases[] = {
        {OLESTR("no_such_module_anywhere"), ERROR_MOD_NOT_FOUND},
        {serverPath(OLESTR("no_such_module")), ERROR_MOD_NOT_FOUND},
        {OLESTR(""), ERROR_MOD_NOT_FOUND},
    };
    for (auto const& entry : cases) {
        SetLastError(0);
        EXPECT_EQ(LoadLibraryW(entry.path.c_str()), nullptr);
        EXPECT_EQ(GetLastError(), entry.expected);
    }
    EXPECT_EQ(LoadLibraryW(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_FALSE(FreeLibrary(nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(GetProcAddress(GetModuleHandleW(OLESTR("oleaut32")), "NoSuchFunction"), nullptr);
    EXPECT_EQ(GetProcAddress(reinterpret_cast<HMODULE>(0x1230000), "Anything"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, ContradictoryFlagsAreRefused) {
    HMODULE module = nullptr;
    DWORD const both = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    for (DWORD const flags : {both, DWORD{0x80}}) {
        SetLastError(0);
        EXPECT_FALSE(GetModuleHandleExW(flags, nullptr, &module)) << flags;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER}) << flags;
    }
    EXPECT_FALSE(GetModuleHandleExW(0, nullptr, nullptr));
    EXPECT_FALSE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                                    reinterpret_cast<LPCWSTR>(16), &module));
    EXPECT_EQ(module, nullptr);
}

TEST(Modules, APathIsCutToTheRoomThereIs) {
    OLECHAR path[1024];
    DWORD const length = GetModuleFileNameW(nullptr, path, 1024);
    ASSERT_GT(length, 3u);
    ASSERT_LT(length, 1024u);
    EXPECT_EQ(Text(path).size(), length);
    Text const full = path;

    struct Case {
        DWORD capacity;
        DWORD result;
        DWORD error;
    };
    Case const cases[] = {{length + 1, length, ERROR_SUCCESS},
                          {length, length, ERROR_INSUFFICIENT_BUFFER},
                          {3, 3, ERROR_INSUFFICIENT_BUFFER},
                          {1, 1, ERROR_INSUFFICIENT_BUFFER}};
    for (auto const& entry : cases) {
        SetLastError(99);
        EXPECT_EQ(GetModuleFileNameW(nullptr, path, entry.capacity), entry.result);
        EXPECT_EQ(GetLastError(), entry.error) << entry.capacity;
        EXPECT_EQ(Text(path, entry.capacity - 1), full.substr(0, entry.capacity - 1));
    }
    EXPECT_EQ(GetModuleFileNameW(reinterpret_cast<HMODULE>(0x1230000), path, 1024), 0u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Locale, IsTheThreadsOwn) {
    LCID const before = GetThreadLocale();
    ASSERT_TRUE(SetThreadLocale(0x0407));
    EXPECT_EQ(GetThreadLocale(), 0x0407u);
    std::thread([before] { EXPECT_EQ(GetThreadLocale(), before); }).join();
    EXPECT_TRUE(SetThreadLocale(LOCALE_SYSTEM_DEFAULT));
    EXPECT_EQ(GetThreadLocale(), GetSystemDefaultLCID());
    EXPECT_TRUE(SetThreadLocale(LOCALE_USER_DEFAULT));
    EXPECT_EQ(GetThreadLocale(), GetUserDefaultLCID());
    SetLastError(0);
    EXPECT_FALSE(SetThreadLocale(0xFFFF));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(GetThreadLocale(), GetUserDefaultLCID());
    EXPECT_TRUE(SetThreadLocale(before));
}

struct ResourceCase {
    LPCWSTR name;
    LPCWSTR type;
    char const* content;
};

TEST(Resources, AreFoundByNumberAndName) {
    HMODULE const loaded = LoadLibraryW(serverFile().c_str());
    HMODULE const asData = LoadLibraryExW(serverFile().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(loaded, nullptr);
    ASSERT_NE(asData, nullptr);
    char const* const first = "first resource\n";
    char const* const second = "the second, longer resource";
    ResourceCase const cases[] = {
        {MAKEINTRESOURCEW(101), OLESTR("REGISTRY"), first},
        {MAKEINTRESOURCEW(102), OLESTR("registry"), second},
        {OLESTR("#101"), OLESTR("REGISTRY"), first},
        {OLESTR("named"), OLESTR("REGISTRY"), second},
        {MAKEINTRESOURCEW(7), MAKEINTRESOURCEW(777), first},
        {OLESTR("#7"), OLESTR("#777"), first},
    };
    for (HMODULE const module : {loaded, asData}) {
        for (auto const& entry : cases) {
            HRSRC const found = FindResourceW(module, entry.name, entry.type);
            ASSERT_NE(found, nullptr) << entry.content;
            DWORD const size = SizeofResource(module, found);
            auto const* const data =
                static_cast<char const*>(LockResource(LoadResource(module, found)));
            ASSERT_NE(data, nullptr);
            EXPECT_EQ(std::string(data, size), entry.content);
        }
        SetLastError(0);
        EXPECT_EQ(FindResourceW(module, MAKEINTRESOURCEW(103), OLESTR("REGISTRY")), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_NAME_NOT_FOUND});
        EXPECT_EQ(FindResourceW(module, MAKEINTRESOURCEW(101), OLESTR("NOTHING")), nullptr);
        EXPECT_EQ(GetLastError(), DWORD{ERROR_RESOURCE_TYPE_NOT_FOUND});
    }
    EXPECT_TRUE(FreeLibrary(asData));
    EXPECT_TRUE(FreeLibrary(loaded));
    EXPECT_EQ(LoadResource(nullptr, nullptr), nullptr);
    EXPECT_EQ(SizeofResource(nullptr, nullptr), 0u);
}

}  // namespace
