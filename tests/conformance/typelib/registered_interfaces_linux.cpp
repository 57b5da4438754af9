// What unregistering a library leaves of the keys of its interfaces, which
// others use too. Other systems delete the keys whole.

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/odd_files_linux.h"

namespace velk::test {
namespace {

constexpr LCID german = 0x0407;
// A dual interface of the library.
Wide const interfaceKey = u"Software\\Classes\\Interface\\{3D1B5C02-7A64-4E0F-9C53-1F2A6B8E0D05}";
Wide const own = u"{3D1B5C02-7A64-4E0F-9C53-1F2A6B8E0D01}";

Wide textAt(Wide const& below, OLECHAR const* value) {
    OLECHAR text[200] = {};
    DWORD size = sizeof text;
    LSTATUS const status = RegGetValueW(HKEY_LOCAL_MACHINE, (interfaceKey + below).c_str(), value,
                                        RRF_RT_REG_SZ, nullptr, text, &size);
    return status == ERROR_SUCCESS ? text : u"none";
}

void setTextOf(Wide const& name, OLECHAR const* value, Wide const& text) {
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                    nullptr);
    RegSetValueExW(key, value, 0, REG_SZ, reinterpret_cast<BYTE const*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(OLECHAR)));
    RegCloseKey(key);
}

struct Row {
    char const* what;
    // What somebody else writes after the registration.
    OLECHAR const* key;
    OLECHAR const* value;
    OLECHAR const* text;
    // Whether the library's own entries stay, since they are not its own any more.
    bool ownStays;
};

Row const rows[] = {
    {"another library", u"\\TypeLib", nullptr, u"{00000000-0000-0000-0000-000000000001}", true},
    {"another version", u"\\TypeLib", u"Version", u"1.3", true},
    {"another marshaller", u"\\ProxyStubClsid32", nullptr, u"{1}", false},
    {"another name", u"", nullptr, u"Theirs", false},
    {"a value", u"", u"Theirs", u"x", false},
    {"a value below", u"\\TypeLib", u"Theirs", u"x", false},
    {"a key", u"\\Theirs", nullptr, u"x", false},
};

TEST(RegisteredInterfaces, KeepWhatOthersWrote) {
    auto const library = loadShapes();
    auto path = shapesPath();
    for (auto const& row : rows) {
        ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
        ASSERT_EQ(textAt(u"\\TypeLib", nullptr), own);
        Wide const marshaller = textAt(u"\\ProxyStubClsid32", nullptr);
        setTextOf(interfaceKey + row.key, row.value, row.text);
        EXPECT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64), S_OK);
        EXPECT_EQ(textAt(row.key, row.value), row.text) << row.what;
        EXPECT_EQ(textAt(u"\\ProxyStubClsid32", nullptr) == marshaller, row.ownStays) << row.what;
        EXPECT_EQ(textAt(u"\\TypeLib", nullptr) == own, row.ownStays && row.value != nullptr)
            << row.what;
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, interfaceKey.c_str());
    }
}

TEST(RegisteredInterfaces, GoWithTheLastLanguage) {
    auto const library = loadShapes();
    auto path = shapesPath();
    ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    HKEY key = nullptr;
    Wide const other = u"Software\\Classes\\TypeLib\\" + own + u"\\1.2\\9";
    ASSERT_EQ(RegCreateKeyExW(HKEY_LOCAL_MACHINE, (other + u"\\win64").c_str(), 0, nullptr, 0,
                              KEY_WRITE, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
    EXPECT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64), S_OK);
    EXPECT_EQ(textAt(u"\\TypeLib", nullptr), own);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, other.c_str());
    ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    EXPECT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64), S_OK);
    EXPECT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, interfaceKey.c_str(), 0, KEY_READ, &key),
              ERROR_FILE_NOT_FOUND);
}

// A registered path that depends on the current folder names no library, also
// not when it goes.
TEST(RegisteredInterfaces, AreNotToldByALibraryOfTheCurrentFolder) {
    auto const library = loadShapes();
    auto path = shapesPath();
    ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    OddFiles const folder;
    folder.copy(VELK_SHAPES_TLB, "x.tlb");
    setTextOf(u"Software\\Classes\\TypeLib\\" + own + u"\\1.2\\407\\win64", nullptr, u"x.tlb");
    EXPECT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64), S_OK);
    EXPECT_EQ(textAt(u"\\TypeLib", nullptr), own);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, interfaceKey.c_str());
}

}  // namespace
}  // namespace velk::test
