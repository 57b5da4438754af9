#include "memory_registry.h"

#include <algorithm>

#include "com/utf.h"

namespace velk::com::test {
namespace {

char lowered(char unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + ('a' - 'A')) : unit;
}

std::string pathOf(KeyPath const& key) {
    std::string const names = toUtf8(key.names), classes = "Software\\Classes";
    if (key.root == HKEY_LOCAL_MACHINE && names.starts_with(classes))
        return "HKCR" + names.substr(classes.size());
    std::string root = "HKCR";
    if (key.root == HKEY_CURRENT_USER) root = "HKCU";
    if (key.root == HKEY_LOCAL_MACHINE) root = "HKLM";
    if (key.root == HKEY_USERS) root = "HKU";
    if (key.root == HKEY_CURRENT_CONFIG) root = "HKCC";
    return names.empty() ? root : root + "\\" + names;
}

}  // namespace

bool MemoryRegistry::ByKey::operator()(std::string const& left,
                                       std::string const& right) const noexcept {
    auto const rank = [](char unit) {
        return unit == 0 || unit == '\\' ? unit != 0
                                         : 2 + static_cast<unsigned char>(lowered(unit));
    };
    return std::ranges::lexicographical_compare(left, right, {}, rank, rank);
}

LSTATUS MemoryRegistry::permit() {
    ++writes;
    if (allowed == 0) return ERROR_ACCESS_DENIED;
    --allowed;
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::write(std::string const& path) {
    if (LSTATUS const refused = permit()) return refused;
    // The predefined keys are always there.
    if (path.find('\\') == path.npos) entries_.try_emplace(path);
    return entries_.contains(path) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS MemoryRegistry::createKey(KeyPath const& key) {
    if (LSTATUS const refused = permit()) return refused;
    std::string const path = pathOf(key) + "\\";
    for (auto end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
        entries_.try_emplace(path.substr(0, end));
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name,
                                 DWORD type, std::span<BYTE const> data) {
    LSTATUS const status = write(pathOf(key));
    if (status == ERROR_SUCCESS) entries_[pathOf(key) + '\0' + toUtf8(name)] = shown(type, data);
    return status;
}

LSTATUS MemoryRegistry::deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) {
    if (LSTATUS const status = write(pathOf(key))) return status;
    bool const wasThere = entries_.erase(pathOf(key) + '\0' + toUtf8(name)) != 0;
    return wasThere ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

bool MemoryRegistry::hasSubkeys(std::string const& path) const {
    return entries_.lower_bound(path + '\\') != entries_.lower_bound(path + '\1');
}

LSTATUS MemoryRegistry::hasSubkeys(KeyPath const& key, bool& result) {
    result = hasSubkeys(pathOf(key));
    return entries_.contains(pathOf(key)) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS MemoryRegistry::deleteKey(KeyPath const& key) {
    if (hasSubkeys(pathOf(key))) return ERROR_ACCESS_DENIED;
    return deleteTree(key);
}

LSTATUS MemoryRegistry::deleteTree(KeyPath const& key) {
    std::string const path = pathOf(key);
    LSTATUS const status = write(path);
    if (status == ERROR_SUCCESS)
        entries_.erase(entries_.find(path), entries_.lower_bound(path + '\1'));
    return status;
}

RegistryTable MemoryRegistry::table() const {
    RegistryTable table;
    for (auto const& [path, value] : entries_) {
        std::string entry = path;
        std::ranges::replace(entry, '\0', ':');
        table[entry] = value;
    }
    return table;
}

}  // namespace velk::com::test
