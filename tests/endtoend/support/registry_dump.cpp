#include "support/registry_dump.h"

#include <gtest/gtest.h>

#include <QString>

#include "com/owners.h"

namespace velk::test {
namespace {

using Text = std::basic_string<OLECHAR>;
using velk::com::RegistryKey;

constexpr DWORD nameCapacity = 300;
constexpr DWORD dataCapacity = 4096;

void dumpValues(HKEY key, std::string const& path, RegistryTable& table) {
    for (DWORD index = 0;; ++index) {
        OLECHAR name[nameCapacity];
        BYTE data[dataCapacity];
        DWORD nameLength = nameCapacity;
        DWORD size = dataCapacity;
        DWORD type = 0;
        if (RegEnumValueW(key, index, name, &nameLength, nullptr, &type, data, &size) !=
            ERROR_SUCCESS) {
            return;
        }
        Text text(reinterpret_cast<OLECHAR const*>(data), size / sizeof(OLECHAR));
        if (!text.empty() && text.back() == 0) text.pop_back();
        table[path + ":" + narrow(Text(name, nameLength))] =
            type == REG_SZ ? narrow(text) : "type " + std::to_string(type);
    }
}

void dumpBelow(HKEY key, std::string const& path,
               std::function<bool(std::string const&)> const& enter, RegistryTable& table) {
    dumpValues(key, path, table);
    for (DWORD index = 0;; ++index) {
        OLECHAR name[nameCapacity];
        DWORD length = nameCapacity;
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return;
        }
        Text const child(name, length);
        std::string const childPath = path.empty() ? narrow(child) : path + "\\" + narrow(child);
        table[childPath] = "";
        if (!enter(childPath)) continue;
        RegistryKey opened;
        if (RegOpenKeyExW(key, child.c_str(), 0, KEY_READ, opened.put()) == ERROR_SUCCESS) {
            dumpBelow(opened.get(), childPath, enter, table);
        }
    }
}

}  // namespace

RegistryTable dumpRegistry(HKEY root, std::string const& key,
                           std::function<bool(std::string const&)> const& enter) {
    RegistryTable table;
    RegistryKey opened;
    if (RegOpenKeyExW(root, wide(key).c_str(), 0, KEY_READ, opened.put()) == ERROR_SUCCESS) {
        dumpBelow(opened.get(), "", enter, table);
    }
    return table;
}

bool keyExists(HKEY root, std::string const& key) {
    RegistryKey opened;
    return RegOpenKeyExW(root, wide(key).c_str(), 0, KEY_READ, opened.put()) == ERROR_SUCCESS;
}

void writeText(HKEY root, std::string const& key, std::string const& name,
               std::string const& text) {
    RegistryKey made;
    ASSERT_EQ(RegCreateKeyExW(root, wide(key).c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                              KEY_WRITE, nullptr, made.put(), nullptr),
              ERROR_SUCCESS);
    Text const data = wide(text);
    ASSERT_EQ(RegSetValueExW(made.get(), wide(name).c_str(), 0, REG_SZ,
                             reinterpret_cast<BYTE const*>(data.c_str()),
                             static_cast<DWORD>((data.size() + 1) * sizeof(OLECHAR))),
              ERROR_SUCCESS);
}

void deleteKey(HKEY root, std::string const& key) {
    RegDeleteTreeW(root, wide(key).c_str());
}

std::basic_string<OLECHAR> wide(std::string const& utf8) {
    QString const text = QString::fromStdString(utf8);
    return {reinterpret_cast<OLECHAR const*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

std::string narrow(std::basic_string<OLECHAR> const& text) {
    return QString(reinterpret_cast<QChar const*>(text.data()), static_cast<int>(text.size()))
        .toStdString();
}

}  // namespace velk::test
