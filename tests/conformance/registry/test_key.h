/// A key of its own for each test, and short ways to say what it holds.
#pragma once

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <unknwn.h>

namespace velk::test {

using Text = std::basic_string<OLECHAR>;
using Bytes = std::vector<BYTE>;

/// An open key, closed with this.
class Key {
  public:
    Key() = default;
    explicit Key(HKEY key) : key_(key) {}
    Key(Key&& other) noexcept : key_(std::exchange(other.key_, nullptr)) {}
    Key& operator=(Key&&) = delete;
    ~Key() {
        if (key_ != nullptr) RegCloseKey(key_);
    }
    operator HKEY() const { return key_; }
    HKEY* target() { return &key_; }

  private:
    HKEY key_ = nullptr;
};

inline Bytes bytesOf(Text const& text) {
    auto const* const begin = reinterpret_cast<BYTE const*>(text.c_str());
    return Bytes(begin, begin + (text.size() + 1) * sizeof(OLECHAR));
}

inline LSTATUS openStatus(HKEY parent, OLECHAR const* name, REGSAM access = KEY_READ) {
    Key key;
    return RegOpenKeyExW(parent, name, 0, access, key.target());
}

inline Key created(HKEY parent, Text const& name, REGSAM access = KEY_ALL_ACCESS) {
    Key key;
    EXPECT_EQ(RegCreateKeyExW(parent, name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                              nullptr, key.target(), nullptr),
              ERROR_SUCCESS);
    return key;
}

inline LSTATUS setBytes(HKEY key, OLECHAR const* name, DWORD type, Bytes const& bytes) {
    return RegSetValueExW(key, name, 0, type, bytes.data(), static_cast<DWORD>(bytes.size()));
}

inline LSTATUS setText(HKEY key, OLECHAR const* name, Text const& text) {
    return setBytes(key, name, REG_SZ, bytesOf(text));
}

inline LSTATUS setNumber(HKEY key, OLECHAR const* name, DWORD number) {
    return RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<BYTE const*>(&number), 4);
}

/// The text of a value; a number sign and the status when there is none.
inline Text textAt(HKEY key, OLECHAR const* path, OLECHAR const* name) {
    OLECHAR buffer[256];
    DWORD size = sizeof buffer;
    LSTATUS const status = RegGetValueW(key, path, name, RRF_RT_REG_SZ, nullptr, buffer, &size);
    if (status == ERROR_SUCCESS) return buffer;
    Text text = OLESTR("#");
    for (char const digit : std::to_string(status)) text.push_back(static_cast<OLECHAR>(digit));
    return text;
}

inline std::vector<Text> keyNames(HKEY key) {
    std::vector<Text> names;
    for (DWORD index = 0;; ++index) {
        OLECHAR name[256];
        DWORD capacity = 256;
        if (RegEnumKeyExW(key, index, name, &capacity, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return names;
        }
        names.emplace_back(name, capacity);
    }
}

inline std::vector<Text> valueNames(HKEY key) {
    std::vector<Text> names;
    for (DWORD index = 0;; ++index) {
        OLECHAR name[256];
        DWORD capacity = 256;
        if (RegEnumValueW(key, index, name, &capacity, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return names;
        }
        names.emplace_back(name, capacity);
    }
}

/// A key below the user's own, gone with all below it after each test.
struct RegistryTest : testing::Test {
    static constexpr auto const* path = OLESTR("Software\\VelkTest");
    RegistryTest() : root(clean()) {}
    ~RegistryTest() override { RegDeleteTreeW(HKEY_CURRENT_USER, path); }

    Key root;

  private:
    static HKEY clean() {
        RegDeleteTreeW(HKEY_CURRENT_USER, path);
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                        nullptr);
        return key;
    }
};

}  // namespace velk::test
