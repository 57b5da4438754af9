#include "registry_table.h"

#include <array>
#include <cstdio>

#include "com/error.h"
#include "com/owners.h"
#include "com/registration/registry.h"
#include "com/utf.h"

namespace velk::com::test {
namespace {

using Text = std::basic_string<OLECHAR>;

constexpr DWORD nameCapacity = 300;
constexpr DWORD dataCapacity = 4096;

Text wide(std::string const& text) {
    return fromUtf8(text).value();
}

RegistryKey open(HKEY root, std::string const& key) {
    RegistryKey opened;
    RegOpenKeyExW(root, wide(key).c_str(), 0, KEY_READ, opened.put());
    return opened;
}

void dumpValues(HKEY key, std::string const& path, RegistryTable& table) {
    std::array<OLECHAR, nameCapacity> name;
    std::array<BYTE, dataCapacity> data;
    for (DWORD index = 0, type = 0;; ++index) {
        DWORD length = nameCapacity, size = dataCapacity;
        if (RegEnumValueW(key, index, name.data(), &length, nullptr, &type, data.data(), &size) !=
            ERROR_SUCCESS)
            return;
        table[path + ":" + toUtf8({name.data(), length})] = shown(type, {data.data(), size});
    }
}

void dumpBelow(HKEY key, std::string const& path,
               std::function<bool(std::string const&)> const& enter, RegistryTable& table) {
    dumpValues(key, path, table);
    std::array<OLECHAR, nameCapacity> name;
    for (DWORD index = 0;; ++index) {
        DWORD length = nameCapacity;
        if (RegEnumKeyExW(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS)
            return;
        std::string const child = toUtf8({name.data(), length});
        std::string const childPath = path.empty() ? child : path + "\\" + child;
        table[childPath] = "";
        if (enter(childPath)) dumpBelow(open(key, child).get(), childPath, enter, table);
    }
}

}  // namespace

std::string shown(DWORD type, std::span<BYTE const> data) {
    std::string text = std::to_string(type) + ":";
    if (type == REG_SZ || type == REG_EXPAND_SZ) {
        Text units;
        // Without the NUL at the end.
        for (std::size_t i = 0; i + 3 < data.size(); i += 2)
            units.push_back(static_cast<OLECHAR>(data[i] | data[i + 1] << 8));
        return text + toUtf8(units);
    }
    for (BYTE const byte : data) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

std::string textOf(RegistryTable const& table, std::string const& separator) {
    std::string text;
    for (auto const& [entry, value] : table)
        text += (text.empty() ? "" : separator) + entry + (value.empty() ? "" : " = " + value);
    return text;
}

RegistryTable dumpRegistry(HKEY root, std::string const& key,
                           std::function<bool(std::string const&)> const& enter) {
    RegistryTable table;
    if (auto const opened = open(root, key); opened.get() != nullptr)
        dumpBelow(opened.get(), "", enter, table);
    return table;
}

bool keyExists(HKEY root, std::string const& key) {
    return open(root, key).get() != nullptr;
}

void writeText(HKEY root, std::string const& key, std::string const& text) {
    SystemRegistry registry;
    KeyPath const path{root, wide(key)};
    throwIfError(registry.createKey(path), key);
    Text const data = wide(text);
    std::span const units(data.c_str(), data.size() + 1);
    auto const bytes = std::as_bytes(units);
    throwIfError(registry.setValue(path, {}, REG_SZ,
                                   {reinterpret_cast<BYTE const*>(bytes.data()), bytes.size()}),
                 key);
}

void deleteKey(HKEY root, std::string const& key) {
    RegDeleteTreeW(root, wide(key).c_str());
}

}  // namespace velk::com::test
