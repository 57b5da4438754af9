#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"
#include "support/data_table.h"

namespace {

using namespace velk::test;

int const someVariable = 0;

Text const& serverFile() {
    static Text const path = serverPath(OLESTR("velktest_classes"));
    return path;
}

/// The error that a call leaves which gives nothing; a number that is none if it
/// gives something.
template <typename Call>
DWORD errorOf(Call call) {
    SetLastError(ERROR_SUCCESS);
    return call() ? ~DWORD{0} : GetLastError();
}

TEST(Modules, AreThereUntilTheirLastReferenceIsFreed) {
    HMODULE const module = LoadLibraryW(serverFile().c_str());
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(LoadLibraryW(serverFile().c_str()), module);
    HMODULE again = nullptr;
    ASSERT_TRUE(GetModuleHandleExW(0, serverFile().c_str(), &again));
    EXPECT_EQ(again, module);
    EXPECT_EQ(GetModuleHandleW(OLESTR("velktest_classes")), module);
    auto const function = GetProcAddress(module, "DllCanUnloadNow");
    ASSERT_NE(function, nullptr);
    EXPECT_EQ(moduleOf(reinterpret_cast<void const*>(function)), module);
    for (int left = 3; left > 0; --left) {
        EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), module) << left << " references are left";
        EXPECT_TRUE(FreeLibrary(module));
    }
    EXPECT_EQ(GetModuleHandleW(serverFile().c_str()), nullptr);
    EXPECT_EQ(errorOf([&] { return FreeLibrary(module); }), DWORD{ERROR_MOD_NOT_FOUND});
    HMODULE const program = GetModuleHandleW(nullptr);
    ASSERT_NE(program, nullptr);
    EXPECT_EQ(moduleOf(&someVariable), program);
}

TEST(Modules, FailuresHaveTheirNumbers) {
    HMODULE module = nullptr;
    auto const none = reinterpret_cast<HMODULE>(0x1230000);
    OLECHAR path[8];
    auto const load = [](Text const& name) { return LoadLibraryW(name.c_str()) != nullptr; };
    auto const find = [&](DWORD flags) {
        return GetModuleHandleExW(flags, nullptr, &module) != FALSE;
    };
    struct Failure {
        char const* what;
        DWORD error, expected = ERROR_MOD_NOT_FOUND;
    };
    for (auto const& each : {
             Failure{"a name", errorOf([&] { return load(OLESTR("no_such_module_anywhere")); })},
             {"a path", errorOf([&] { return load(serverPath(OLESTR("no_such_module"))); })},
             {"an empty name", errorOf([&] { return load(OLESTR("")); })},
             {"no name", errorOf([] { return LoadLibraryW(nullptr) != nullptr; }),
              ERROR_INVALID_PARAMETER},
             {"nothing to free", errorOf([] { return FreeLibrary(nullptr); }),
              ERROR_INVALID_HANDLE},
             {"a function of none",
              errorOf([&] { return GetProcAddress(none, "Anything") != nullptr; })},
             {"the file of none", errorOf([&] { return GetModuleFileNameW(none, path, 8) != 0; })},
             {"pinned without a reference", errorOf([&] {
                  return find(GET_MODULE_HANDLE_EX_FLAG_PIN |
                              GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT);
              }),
              ERROR_INVALID_PARAMETER},
             {"an unknown flag", errorOf([&] { return find(0x80); }), ERROR_INVALID_PARAMETER},
         }) {
        EXPECT_EQ(each.error, each.expected) << each.what;
    }
    EXPECT_EQ(GetProcAddress(GetModuleHandleW(OLESTR("oleaut32")), "NoSuchFunction"), nullptr);
    EXPECT_FALSE(GetModuleHandleExW(0, nullptr, nullptr));
    EXPECT_EQ(moduleOf(reinterpret_cast<void const*>(16)), nullptr);
}

TEST(Modules, APathIsCutToTheRoomThereIs) {
    OLECHAR path[1024];
    DWORD const length = GetModuleFileNameW(nullptr, path, 1024);
    ASSERT_GT(length, 3u);
    ASSERT_LT(length, 1024u);
    Text const full = path;
    EXPECT_EQ(full.size(), length);
    for (DWORD const room : {length + 1, length, DWORD{3}, DWORD{1}}) {
        bool const fits = room > length;
        SetLastError(99);
        EXPECT_EQ(GetModuleFileNameW(nullptr, path, room), fits ? length : room);
        EXPECT_EQ(GetLastError(), fits ? DWORD{ERROR_SUCCESS} : DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_EQ(Text(path, room - 1), full.substr(0, room - 1));
    }
}

TEST(Locale, IsTheThreadsOwn) {
    LCID const before = GetThreadLocale();
    ASSERT_TRUE(SetThreadLocale(0x0407));
    EXPECT_EQ(GetThreadLocale(), 0x0407u);
    onThreads(1, [before](int) { EXPECT_EQ(GetThreadLocale(), before); });
    EXPECT_TRUE(SetThreadLocale(LOCALE_SYSTEM_DEFAULT));
    EXPECT_EQ(GetThreadLocale(), GetSystemDefaultLCID());
    EXPECT_TRUE(SetThreadLocale(LOCALE_USER_DEFAULT));
    EXPECT_EQ(errorOf([] { return SetThreadLocale(0xFFFF); }), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(GetThreadLocale(), GetUserDefaultLCID());
    EXPECT_TRUE(SetThreadLocale(before));
}

/// A resource's type or name: a number, or a text.
class ResourceName {
  public:
    explicit ResourceName(std::string const& cell)
        : text_(cell.begin(), cell.end()),
          number_(cell.find_first_not_of("0123456789") == cell.npos ? std::stoi(cell) : 0) {}
    operator LPCWSTR() const { return number_ != 0 ? MAKEINTRESOURCEW(number_) : text_.c_str(); }

  private:
    Text text_;
    int number_;
};

TEST(Resources, AreFoundByNumberAndName) {
    HMODULE const loaded = LoadLibraryW(serverFile().c_str());
    HMODULE const asData = LoadLibraryExW(serverFile().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(loaded, nullptr);
    ASSERT_NE(asData, nullptr);
    for (HMODULE const module : {loaded, asData}) {
        expectTable("com/resources.tsv", [&](DataRow const& row) -> std::string {
            ResourceName const name(row["name"]), type(row["type"]);
            SetLastError(ERROR_SUCCESS);
            HRSRC const found = FindResourceW(module, name, type);
            if (found == nullptr) return "error " + std::to_string(GetLastError());
            auto const* const data =
                static_cast<char const*>(LockResource(LoadResource(module, found)));
            return data == nullptr ? "nothing" : std::string(data, SizeofResource(module, found));
        });
    }
    EXPECT_TRUE(FreeLibrary(asData));
    EXPECT_TRUE(FreeLibrary(loaded));
    EXPECT_EQ(LoadResource(nullptr, nullptr), nullptr);
    EXPECT_EQ(SizeofResource(nullptr, nullptr), 0u);
}

}  // namespace
