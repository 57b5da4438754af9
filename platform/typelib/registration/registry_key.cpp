#include "platform/typelib/registration/registry_key.h"

#include <new>

#include "ktmw32.h"
#include "platform/system/boundary.h"
#include "platform/typelib/owners.h"
#include "velk_transactions.h"
#include "winbase.h"

namespace velk::typelib {
namespace {

using platform::unlessOutOfMemory;

// The longest name of a key, and its terminating zero.
constexpr DWORD longestName = 256;

}  // namespace

RegistryKey::~RegistryKey() {
    if (key_) RegCloseKey(key_);
}

RegistryKey RegistryKey::open(HKEY parent, std::u16string const& name) {
    RegistryKey key;
    LSTATUS const status =
        unlessOutOfMemory(RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key.key_));
    if (status != ERROR_SUCCESS) key.key_ = nullptr;
    return key;
}

RegistryKey RegistryKey::create(HKEY parent, std::u16string const& name) {
    RegistryKey key;
    LSTATUS const status =
        unlessOutOfMemory(RegCreateKeyExW(parent, name.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                          KEY_READ | KEY_WRITE, nullptr, &key.key_, nullptr));
    if (status != ERROR_SUCCESS) key.key_ = nullptr;
    require(status == ERROR_SUCCESS, TYPE_E_REGISTRYACCESS);
    return key;
}

std::vector<std::u16string> RegistryKey::subKeys() const {
    std::vector<std::u16string> names;
    if (!key_) return names;
    for (DWORD index = 0;; ++index) {
        char16_t name[longestName];
        DWORD length = longestName;
        LSTATUS const status = unlessOutOfMemory(
            RegEnumKeyExW(key_, index, name, &length, nullptr, nullptr, nullptr, nullptr));
        if (status != ERROR_SUCCESS) return names;
        names.emplace_back(name, length);
    }
}

bool RegistryKey::isEmpty() const {
    DWORD keys = 0;
    DWORD values = 0;
    return key_ != nullptr &&
           unlessOutOfMemory(RegQueryInfoKeyW(key_, nullptr, nullptr, nullptr, &keys, nullptr,
                                              nullptr, &values, nullptr, nullptr, nullptr,
                                              nullptr)) == ERROR_SUCCESS &&
           keys == 0 && values == 0;
}

std::optional<std::u16string> RegistryKey::text(LPCWSTR name) const {
    DWORD type = 0;
    DWORD size = 0;
    auto const read = [&](LPBYTE data) {
        return unlessOutOfMemory(RegQueryValueExW(key_, name, nullptr, &type, data, &size)) ==
               ERROR_SUCCESS;
    };
    if (!key_ || !read(nullptr)) return std::nullopt;
    if (type != REG_SZ && type != REG_EXPAND_SZ) return std::nullopt;
    std::u16string text(size / sizeof(char16_t) + 1, u'\0');
    size = static_cast<DWORD>(text.size() * sizeof(char16_t));
    if (!read(reinterpret_cast<LPBYTE>(text.data()))) return std::nullopt;
    text.resize(text.find(u'\0'));
    return text;
}

void RegistryKey::setText(LPCWSTR name, std::u16string const& text) const {
    auto const size = static_cast<DWORD>((text.size() + 1) * sizeof(char16_t));
    LSTATUS const status = unlessOutOfMemory(
        RegSetValueExW(key_, name, 0, REG_SZ, reinterpret_cast<BYTE const*>(text.c_str()), size));
    require(status == ERROR_SUCCESS, TYPE_E_REGISTRYACCESS);
}

void deleteText(HKEY parent, std::u16string const& name, LPCWSTR value,
                std::u16string const& text) {
    if (RegistryKey::open(parent, name).text(value) != text) return;
    HKEY key = nullptr;
    if (unlessOutOfMemory(RegOpenKeyExW(parent, name.c_str(), 0, KEY_SET_VALUE, &key)) !=
        ERROR_SUCCESS) {
        return;
    }
    RegDeleteValueW(key, value);
    RegCloseKey(key);
}

RegistryChange::RegistryChange(HKEY hive) {
    if (VelkThreadTransaction() != nullptr) return;
    HANDLE const made = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    if (made == INVALID_HANDLE_VALUE) throw std::bad_alloc();
    transaction_ = made;
    VelkSetThreadTransaction(made);
    // What is read before the first write shall hold then. What keeps the hive
    // from being written is met again by the changes themselves.
    VelkTakeHive(hive);
}

RegistryChange::~RegistryChange() {
    if (transaction_ != nullptr) CloseHandle(transaction_);
}

void RegistryChange::commit() {
    if (transaction_ == nullptr || CommitTransaction(transaction_)) return;
    unlessOutOfMemory(static_cast<LSTATUS>(GetLastError()));
    fail(TYPE_E_REGISTRYACCESS);
}

bool deleteKeyTree(HKEY parent, std::u16string const& name) {
    return unlessOutOfMemory(RegDeleteTreeW(parent, name.c_str())) == ERROR_SUCCESS;
}

}  // namespace velk::typelib
