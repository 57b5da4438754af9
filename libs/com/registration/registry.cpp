#include "com/registration/registry.h"

#include <limits>

#include "com/owners.h"

namespace velk::com {
namespace {

LSTATUS openKey(KeyPath const& key, REGSAM access, RegistryKey& out) {
    return RegOpenKeyExW(key.root, key.names.c_str(), 0, access, out.put());
}

}  // namespace

LSTATUS SystemRegistry::createKey(KeyPath const& key) {
    RegistryKey made;
    return RegCreateKeyExW(key.root, key.names.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                           KEY_WRITE, nullptr, made.put(), nullptr);
}

LSTATUS SystemRegistry::setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name,
                                 DWORD type, std::span<BYTE const> data) {
    if (data.size() > std::numeric_limits<DWORD>::max()) return ERROR_INVALID_PARAMETER;
    RegistryKey open;
    LSTATUS const status = openKey(key, KEY_SET_VALUE, open);
    if (status != ERROR_SUCCESS) return status;
    return RegSetValueExW(open.get(), name.empty() ? nullptr : name.c_str(), 0, type, data.data(),
                          static_cast<DWORD>(data.size()));
}

LSTATUS SystemRegistry::deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) {
    RegistryKey open;
    LSTATUS const status = openKey(key, KEY_SET_VALUE, open);
    return status == ERROR_SUCCESS ? RegDeleteValueW(open.get(), name.c_str()) : status;
}

LSTATUS SystemRegistry::hasSubkeys(KeyPath const& key, bool& result) {
    RegistryKey open;
    LSTATUS status = openKey(key, KEY_READ, open);
    if (status != ERROR_SUCCESS) return status;
    DWORD count = 0;
    status = RegQueryInfoKeyW(open.get(), nullptr, nullptr, nullptr, &count, nullptr, nullptr,
                              nullptr, nullptr, nullptr, nullptr, nullptr);
    result = count != 0;
    return status;
}

LSTATUS SystemRegistry::deleteKey(KeyPath const& key) {
    return RegDeleteKeyW(key.root, key.names.c_str());
}

LSTATUS SystemRegistry::deleteTree(KeyPath const& key) {
    return RegDeleteTreeW(key.root, key.names.c_str());
}

}  // namespace velk::com
