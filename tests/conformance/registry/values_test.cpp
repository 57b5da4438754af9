#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryValues = RegistryTest;

TEST_F(RegistryValues, ComeBackAsTheyWereSet) {
    struct Case {
        OLECHAR const* name;
        DWORD type;
        Bytes bytes;
    };
    Case const cases[] = {
        {nullptr, REG_SZ, bytesOf(OLESTR("the default value"))},
        {OLESTR("text"), REG_SZ, bytesOf(Text{0x00E4, 0x20AC, 0xD83D, 0xDE00})},
        {OLESTR("lone surrogate"), REG_SZ, bytesOf(Text{0xDC00, 0x0041})},
        {OLESTR("odd length"), REG_SZ, {1, 2, 3}},
        {OLESTR("number"), REG_DWORD, {1, 2, 3, 4}},
        {OLESTR("long number"), REG_QWORD, {1, 2, 3, 4, 5, 6, 7, 8}},
        {OLESTR("bytes"), REG_BINARY, {0, 255, 0, 7}},
        {OLESTR("none"), REG_NONE, {}},
        {OLESTR("private type"), 999, {9}},
        {OLESTR("with \\ and /"), REG_BINARY, {5}},
        {OLESTR("large"), REG_BINARY, Bytes(1 << 20, 0x7E)},
    };
    for (auto const& entry : cases) {
        ASSERT_EQ(setBytes(root, entry.name, entry.type, entry.bytes), ERROR_SUCCESS);
    }
    for (auto const& entry : cases) {
        DWORD type = 77, size = 0;
        ASSERT_EQ(RegQueryValueExW(root, entry.name, nullptr, &type, nullptr, &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(type, entry.type);
        ASSERT_EQ(size, entry.bytes.size());
        Bytes bytes(size);
        ASSERT_EQ(RegQueryValueExW(root, entry.name, nullptr, nullptr, bytes.data(), &size),
                  ERROR_SUCCESS);
        EXPECT_EQ(bytes, entry.bytes);
    }
}

TEST_F(RegistryValues, NamesIgnoreCaseAndKeepTheirFirst) {
    setNumber(root, OLESTR("Name"), 1);
    setNumber(root, OLESTR("NAME"), 2);
    EXPECT_EQ(valueNames(root), std::vector<Text>{OLESTR("Name")});
    DWORD number = 0, size = 4;
    RegQueryValueExW(root, OLESTR("name"), nullptr, nullptr, reinterpret_cast<BYTE*>(&number),
                     &size);
    EXPECT_EQ(number, 2u);
    EXPECT_EQ(RegDeleteValueW(root, OLESTR("nAME")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteValueW(root, OLESTR("nAME")), ERROR_FILE_NOT_FOUND);
}

TEST_F(RegistryValues, TooLittleRoomTellsWhatIsNeeded) {
    setText(root, OLESTR("v"), OLESTR("hello"));
    BYTE buffer[12] = {0xEE};
    DWORD type = 0, size = 4;
    EXPECT_EQ(RegQueryValueExW(root, OLESTR("v"), nullptr, &type, buffer, &size), ERROR_MORE_DATA);
    EXPECT_EQ(size, 12u);
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(buffer[0], 0xEE);
    EXPECT_EQ(RegQueryValueExW(root, OLESTR("v"), nullptr, &type, buffer, &size), ERROR_SUCCESS);
}

TEST_F(RegistryValues, BadArgumentsAreRefused) {
    BYTE byte = 0;
    DWORD number = 0;
    EXPECT_EQ(RegQueryValueExW(root, nullptr, nullptr, nullptr, &byte, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(root, nullptr, &number, nullptr, nullptr, nullptr),
              ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegSetValueExW(root, OLESTR("v"), 0, REG_BINARY, nullptr, 4), ERROR_NOACCESS);
    EXPECT_EQ(RegSetValueExW(root, OLESTR("v"), 0, REG_BINARY, nullptr, 0), ERROR_SUCCESS);
    EXPECT_EQ(setNumber(root, Text(16383, OLESTR('n')).c_str(), 1), ERROR_SUCCESS);
    EXPECT_EQ(setNumber(root, Text(16384, OLESTR('n')).c_str(), 1), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(RegQueryValueExW(root, OLESTR("nothing"), nullptr, nullptr, nullptr, nullptr),
              ERROR_FILE_NOT_FOUND);
}

struct WantedCase {
    char const* what;
    OLECHAR const* name;
    DWORD flags;
    LSTATUS expected;
    DWORD type;
    DWORD size;
};

TEST_F(RegistryValues, AreFetchedByWantedType) {
    setNumber(root, OLESTR("number"), 7);
    setText(root, OLESTR("text"), OLESTR("abc"));
    setBytes(root, OLESTR("bytes"), REG_BINARY, {1, 2});
    setBytes(root, OLESTR("expand"), REG_EXPAND_SZ, bytesOf(OLESTR("%VELK_NO_SUCH%!")));
    WantedCase const cases[] = {
        {"number", OLESTR("number"), RRF_RT_DWORD, ERROR_SUCCESS, REG_DWORD, 4},
        {"number as text", OLESTR("number"), RRF_RT_REG_SZ, ERROR_UNSUPPORTED_TYPE, REG_DWORD, 4},
        {"text", OLESTR("text"), RRF_RT_REG_SZ, ERROR_SUCCESS, REG_SZ, 8},
        {"anything", OLESTR("text"), RRF_RT_ANY, ERROR_SUCCESS, REG_SZ, 8},
        {"nothing wanted", OLESTR("text"), 0, ERROR_UNSUPPORTED_TYPE, REG_SZ, 8},
        {"expanded", OLESTR("expand"), RRF_RT_REG_SZ, ERROR_SUCCESS, REG_SZ, 32},
        {"not expanded", OLESTR("expand"), RRF_RT_ANY | RRF_NOEXPAND, ERROR_SUCCESS, REG_EXPAND_SZ,
         32},
        {"contradiction", OLESTR("expand"), RRF_RT_REG_EXPAND_SZ, ERROR_INVALID_PARAMETER, 0, 0},
        {"missing", OLESTR("missing"), RRF_RT_ANY, ERROR_FILE_NOT_FOUND, 0, 0},
    };
    for (auto const& entry : cases) {
        BYTE buffer[64];
        DWORD type = 0, size = sizeof buffer;
        EXPECT_EQ(
            RegGetValueW(HKEY_CURRENT_USER, path, entry.name, entry.flags, &type, buffer, &size),
            entry.expected)
            << entry.what;
        if (entry.expected != ERROR_SUCCESS) continue;
        EXPECT_EQ(type, entry.type) << entry.what;
        EXPECT_EQ(size, entry.size) << entry.what;
    }
}

TEST_F(RegistryValues, EnvironmentVariablesAreExpanded) {
    setBytes(root, OLESTR("path"), REG_EXPAND_SZ, bytesOf(OLESTR("100<%PATH%>")));
    std::vector<OLECHAR> buffer(32768);
    auto size = static_cast<DWORD>(buffer.size() * sizeof(OLECHAR));
    DWORD type = 0;
    ASSERT_EQ(RegGetValueW(root, nullptr, OLESTR("path"), RRF_RT_ANY, &type, buffer.data(), &size),
              ERROR_SUCCESS);
    Text const text = buffer.data();
    EXPECT_EQ(type, DWORD{REG_SZ});
    EXPECT_EQ(text.substr(0, 4), OLESTR("100<"));
    EXPECT_EQ(text.back(), OLESTR('>'));
    EXPECT_GT(text.size(), 10u);
    EXPECT_EQ(text.find(OLESTR("%PATH%")), Text::npos);
}

}  // namespace
