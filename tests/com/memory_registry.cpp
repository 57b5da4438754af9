#include "memory_registry.h"

#include <algorithm>
#include <iterator>

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

/// The keys below one, which follow it.
template <typename Keys>
auto endOfTree(Keys& keys, typename Keys::iterator key) {
    std::string const prefix = key->first + "\\";
    return std::find_if(std::next(key), keys.end(), [&](auto const& entry) {
        auto const start = entry.first.substr(0, prefix.size());
        return !std::ranges::equal(start, prefix, {}, lowered, lowered);
    });
}

}  // namespace

// The separator comes before every other character, so that what is below a key
// follows it.
bool MemoryRegistry::IgnoringCase::operator()(std::string const& left,
                                              std::string const& right) const noexcept {
    auto const rank = [](char unit) {
        return unit == '\\' ? 0 : 1 + static_cast<unsigned char>(lowered(unit));
    };
    return std::ranges::lexicographical_compare(left, right, {}, rank, rank);
}

LSTATUS MemoryRegistry::permit() {
    ++writes;
    if (allowed == 0) return ERROR_ACCESS_DENIED;
    --allowed;
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::write(KeyPath const& key, Keys::iterator& found) {
    if (LSTATUS const refused = permit()) return refused;
    std::string const path = pathOf(key);
    // The predefined keys are always there.
    if (path.find('\\') == path.npos) keys_.try_emplace(path);
    found = keys_.find(path);
    return found == keys_.end() ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::createKey(KeyPath const& key) {
    if (LSTATUS const refused = permit()) return refused;
    std::string const path = pathOf(key);
    for (auto end = path.find('\\'); end != path.npos; end = path.find('\\', end + 1))
        keys_.try_emplace(path.substr(0, end));
    keys_.try_emplace(path);
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::setValue(KeyPath const& key, std::basic_string<OLECHAR> const& name,
                                 DWORD type, std::span<BYTE const> data) {
    Keys::iterator found;
    LSTATUS const status = write(key, found);
    if (status == ERROR_SUCCESS) found->second[toUtf8(name)] = shown(type, data);
    return status;
}

LSTATUS MemoryRegistry::deleteValue(KeyPath const& key, std::basic_string<OLECHAR> const& name) {
    Keys::iterator found;
    if (LSTATUS const status = write(key, found)) return status;
    return found->second.erase(toUtf8(name)) != 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS MemoryRegistry::hasSubkeys(KeyPath const& key, bool& result) {
    auto const found = keys_.find(pathOf(key));
    if (found == keys_.end()) return ERROR_FILE_NOT_FOUND;
    result = endOfTree(keys_, found) != std::next(found);
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::deleteKey(KeyPath const& key) {
    Keys::iterator found;
    if (LSTATUS const status = write(key, found)) return status;
    if (endOfTree(keys_, found) != std::next(found)) return ERROR_ACCESS_DENIED;
    keys_.erase(found);
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::deleteTree(KeyPath const& key) {
    Keys::iterator found;
    if (LSTATUS const status = write(key, found)) return status;
    keys_.erase(found, endOfTree(keys_, found));
    return ERROR_SUCCESS;
}

RegistryTable MemoryRegistry::table() const {
    RegistryTable table;
    for (auto const& [path, values] : keys_) {
        table[path] = "";
        for (auto const& [name, value] : values) table[path + ":" + name] = value;
    }
    return table;
}

}  // namespace velk::com::test
