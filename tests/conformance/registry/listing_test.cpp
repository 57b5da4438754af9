#include <algorithm>

#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryListing = RegistryTest;

TEST_F(RegistryListing, NamesEachSubkeyOnce) {
    std::vector<Text> expected;
    for (OLECHAR letter = OLESTR('a'); letter <= OLESTR('z'); ++letter) {
        expected.push_back(Text(1, letter) + OLESTR("-key"));
        created(root, expected.back());
    }
    auto names = keyNames(root);
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, expected);
}

TEST_F(RegistryListing, DeletingTheFirstAgainAndAgainEmptiesTheKey) {
    for (auto const* name : {OLESTR("a"), OLESTR("b"), OLESTR("c")}) created(root, name);
    int deleted = 0;
    OLECHAR name[64];
    DWORD capacity = 64;
    while (RegEnumKeyExW(root, 0, name, &capacity, nullptr, nullptr, nullptr, nullptr) ==
           ERROR_SUCCESS) {
        ASSERT_EQ(RegDeleteKeyW(root, name), ERROR_SUCCESS);
        ASSERT_LE(++deleted, 3);
        capacity = 64;
    }
    EXPECT_EQ(deleted, 3);
}

TEST_F(RegistryListing, TooLittleRoomAndTheEnd) {
    created(root, OLESTR("name"));
    setText(root, OLESTR("value"), OLESTR("text"));
    OLECHAR name[64];
    struct Case {
        DWORD index;
        DWORD capacity;
        LSTATUS keys;
        LSTATUS values;
    };
    Case const cases[] = {{0, 4, ERROR_MORE_DATA, ERROR_MORE_DATA},
                          {0, 5, ERROR_SUCCESS, ERROR_MORE_DATA},
                          {0, 6, ERROR_SUCCESS, ERROR_SUCCESS},
                          {1, 64, ERROR_NO_MORE_ITEMS, ERROR_NO_MORE_ITEMS},
                          {0xFFFFFFFF, 64, ERROR_NO_MORE_ITEMS, ERROR_NO_MORE_ITEMS}};
    for (auto const& entry : cases) {
        DWORD capacity = entry.capacity;
        EXPECT_EQ(
            RegEnumKeyExW(root, entry.index, name, &capacity, nullptr, nullptr, nullptr, nullptr),
            entry.keys)
            << entry.index << ", " << entry.capacity;
        if (entry.keys == ERROR_SUCCESS) {
            EXPECT_EQ(capacity, 4u) << "without the zero";
        }
        capacity = entry.capacity;
        EXPECT_EQ(
            RegEnumValueW(root, entry.index, name, &capacity, nullptr, nullptr, nullptr, nullptr),
            entry.values)
            << entry.index << ", " << entry.capacity;
    }
    DWORD capacity = 64, size = 2, type = 0;
    BYTE data[2];
    EXPECT_EQ(RegEnumValueW(root, 0, name, &capacity, nullptr, &type, data, &size),
              ERROR_MORE_DATA);
    EXPECT_EQ(size, 10u);
}

TEST_F(RegistryListing, BadArgumentsAreRefused) {
    OLECHAR name[8];
    DWORD capacity = 8, number = 0;
    BYTE byte = 0;
    EXPECT_EQ(RegEnumKeyExW(root, 0, name, &capacity, &number, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegEnumValueW(root, 0, nullptr, &capacity, nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegEnumValueW(root, 0, name, nullptr, nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegEnumValueW(root, 0, name, &capacity, &number, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegEnumValueW(root, 0, name, &capacity, nullptr, nullptr, &byte, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryInfoKeyW(root, name, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
}

TEST_F(RegistryListing, FactsOfAKey) {
    OLECHAR keyClass[] = OLESTR("A class");
    Key key;
    ASSERT_EQ(RegCreateKeyExW(root, OLESTR("Facts"), 0, keyClass, 0, KEY_ALL_ACCESS, nullptr,
                              key.target(), nullptr),
              ERROR_SUCCESS);
    created(key, OLESTR("four"));
    created(key, OLESTR("seven__"));
    setText(key, OLESTR("value"), OLESTR("text"));
    setNumber(key, OLESTR("n"), 1);

    OLECHAR name[64];
    DWORD capacity = 64, keys = 0, longestKey = 0, values = 0, longestName = 0, longestData = 0;
    FILETIME written{};
    ASSERT_EQ(RegQueryInfoKeyW(key, name, &capacity, nullptr, &keys, &longestKey, nullptr, &values,
                               &longestName, &longestData, nullptr, &written),
              ERROR_SUCCESS);
    EXPECT_EQ(Text(name), keyClass);
    EXPECT_EQ(capacity, 7u);
    EXPECT_EQ(keys, 2u);
    EXPECT_EQ(longestKey, 7u);
    EXPECT_EQ(values, 2u);
    EXPECT_EQ(longestName, 5u);
    EXPECT_EQ(longestData, 10u);
    // Years from 1993 on have a high half above this.
    EXPECT_GT(written.dwHighDateTime, 0x01B00000u);
}

}  // namespace
