#include <algorithm>

#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryKeys = RegistryTest;

TEST_F(RegistryKeys, AreMadeOnceAndKeepTheirCase) {
    Key key;
    DWORD disposition = 0;
    auto const make = [&](OLECHAR const* name) {
        Key made;
        return RegCreateKeyExW(root, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, made.target(),
                               &disposition);
    };
    EXPECT_EQ(make(OLESTR("One\\Two")), ERROR_SUCCESS);
    EXPECT_EQ(disposition, DWORD{REG_CREATED_NEW_KEY});
    EXPECT_EQ(make(OLESTR("ONE\\tWO")), ERROR_SUCCESS);
    EXPECT_EQ(disposition, DWORD{REG_OPENED_EXISTING_KEY});
    EXPECT_EQ(keyNames(root), std::vector<Text>{OLESTR("One")});
    EXPECT_EQ(keyNames(created(root, OLESTR("one"))), std::vector<Text>{OLESTR("Two")});
}

TEST_F(RegistryKeys, NamesOfOtherAlphabetsIgnoreCaseToo) {
    created(root, Text{0x00C4, 0x0416, 0x03A9});
    EXPECT_EQ(openStatus(root, Text{0x00E4, 0x0436, 0x03C9}.c_str()), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(root, Text{0x00E5, 0x0436, 0x03C9}.c_str()), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryKeys, AbsurdNamesHaveTheirCodes) {
    struct Case {
        char const* what;
        Text name;
        LSTATUS make;
        LSTATUS open;
    };
    Case const cases[] = {
        {"255 units", Text(255, OLESTR('a')), ERROR_SUCCESS, ERROR_SUCCESS},
        {"10000 units", Text(10000, OLESTR('b')), ERROR_INVALID_PARAMETER, ERROR_INVALID_PARAMETER},
        {"separator alone", OLESTR("\\"), ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        {"separator in front", OLESTR("\\name"), ERROR_BAD_PATHNAME, ERROR_BAD_PATHNAME},
        {"separator behind", OLESTR("name\\"), ERROR_SUCCESS, ERROR_SUCCESS},
        {"two separators", OLESTR("a\\\\b"), ERROR_SUCCESS, ERROR_SUCCESS},
        {"slash", OLESTR("a/b"), ERROR_SUCCESS, ERROR_SUCCESS},
        {"empty", OLESTR(""), ERROR_SUCCESS, ERROR_SUCCESS},
    };
    for (auto const& entry : cases) {
        Key key;
        EXPECT_EQ(RegCreateKeyExW(root, entry.name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                  key.target(), nullptr),
                  entry.make)
            << entry.what;
        EXPECT_EQ(openStatus(root, entry.name.c_str()), entry.open) << entry.what;
    }
    std::vector<Text> const expected = {OLESTR("a"), OLESTR("a/b"), Text(255, OLESTR('a')),
                                        OLESTR("name")};
    auto const names = keyNames(root);
    for (auto const& name : expected) {
        EXPECT_NE(std::find(names.begin(), names.end(), name), names.end());
    }
    EXPECT_EQ(names.size(), expected.size());
}

TEST_F(RegistryKeys, BadArgumentsAreRefused) {
    Key key;
    EXPECT_EQ(RegOpenKeyExW(root, OLESTR("x"), 0, KEY_READ, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(
        RegCreateKeyExW(root, OLESTR("x"), 1, nullptr, 0, KEY_READ, nullptr, key.target(), nullptr),
        ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegDeleteKeyW(root, nullptr), ERROR_INVALID_PARAMETER);
    for (HKEY const bogus : {HKEY(nullptr), reinterpret_cast<HKEY>(0x12345678)}) {
        EXPECT_EQ(openStatus(bogus, OLESTR("x")), ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegQueryValueExW(bogus, nullptr, nullptr, nullptr, nullptr, nullptr),
                  ERROR_INVALID_HANDLE);
        EXPECT_EQ(RegCloseKey(bogus), ERROR_INVALID_HANDLE);
    }
    HKEY closed = nullptr;
    ASSERT_EQ(RegOpenKeyExW(root, nullptr, 0, KEY_READ, &closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_SUCCESS);
    EXPECT_EQ(RegCloseKey(closed), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(HKEY_CURRENT_USER, OLESTR("Software")), ERROR_SUCCESS);
}

TEST_F(RegistryKeys, RightsOfAHandleCount) {
    created(root, OLESTR("Sub"));
    Key reading;
    ASSERT_EQ(RegOpenKeyExW(root, OLESTR("Sub"), 0, KEY_READ, reading.target()), ERROR_SUCCESS);
    EXPECT_EQ(setNumber(reading, OLESTR("n"), 1), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteValueW(reading, OLESTR("n")), ERROR_ACCESS_DENIED);
    Key writing;
    ASSERT_EQ(RegOpenKeyExW(root, OLESTR("Sub"), 0, KEY_WRITE, writing.target()), ERROR_SUCCESS);
    EXPECT_EQ(setNumber(writing, OLESTR("n"), 1), ERROR_SUCCESS);
    EXPECT_EQ(RegQueryValueExW(writing, OLESTR("n"), nullptr, nullptr, nullptr, nullptr),
              ERROR_ACCESS_DENIED);
    OLECHAR name[8];
    DWORD capacity = 8;
    EXPECT_EQ(RegEnumKeyExW(writing, 0, name, &capacity, nullptr, nullptr, nullptr, nullptr),
              ERROR_ACCESS_DENIED);
}

TEST_F(RegistryKeys, DeletingSparesWhatHasSubkeys) {
    created(root, OLESTR("Parent\\Child"));
    EXPECT_EQ(RegDeleteKeyW(root, OLESTR("Parent")), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegDeleteKeyW(root, OLESTR("nothing")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteKeyW(root, OLESTR("parent\\CHILD")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(root, OLESTR("Parent")), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(root, OLESTR("Parent")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryKeys, TreesAreDeletedWhole) {
    Key const top = created(root, OLESTR("Top"));
    created(top, OLESTR("a\\b\\c\\d"));
    setText(created(top, OLESTR("a\\b")), nullptr, OLESTR("text"));
    setText(top, OLESTR("v"), OLESTR("text"));
    EXPECT_EQ(RegDeleteTreeW(root, OLESTR("nothing")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(top, nullptr), ERROR_SUCCESS);
    EXPECT_EQ(keyNames(top), std::vector<Text>{}) << "the key itself stays, empty";
    EXPECT_EQ(valueNames(top), std::vector<Text>{});
    created(top, OLESTR("a\\b\\c"));
    EXPECT_EQ(textAt(top, OLESTR("a\\b"), nullptr), OLESTR("#2"));
    EXPECT_EQ(RegDeleteTreeW(root, OLESTR("Top")), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(root, OLESTR("Top")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryKeys, ADeletedKeyIsGoneForItsHandles) {
    Key const gone = created(root, OLESTR("Gone"));
    setNumber(gone, OLESTR("n"), 1);
    ASSERT_EQ(RegDeleteKeyW(root, OLESTR("Gone")), ERROR_SUCCESS);
    Key const again = created(root, OLESTR("Gone"));
    setNumber(again, OLESTR("n"), 2);

    OLECHAR name[64];
    DWORD capacity = 64;
    DWORD count = 0;
    Key made;
    EXPECT_EQ(RegQueryValueExW(gone, OLESTR("n"), nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(setNumber(gone, OLESTR("n"), 1), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteValueW(gone, OLESTR("n")), ERROR_KEY_DELETED);
    EXPECT_EQ(openStatus(gone, OLESTR("x")), ERROR_KEY_DELETED);
    EXPECT_EQ(openStatus(gone, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegCreateKeyExW(gone, OLESTR("x"), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                              made.target(), nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteKeyW(gone, OLESTR("x")), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteTreeW(gone, nullptr), ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumKeyExW(gone, 0, name, &capacity, nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(RegEnumValueW(gone, 0, name, &capacity, nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
    EXPECT_EQ(RegQueryInfoKeyW(gone, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr),
              ERROR_KEY_DELETED);
}

}  // namespace
