#include "memory_registry.h"

#include <algorithm>
#include <cstdio>

#include "com/utf.h"

namespace velk::com::test {
namespace {

OLECHAR lowered(OLECHAR unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<OLECHAR>(unit + ('a' - 'A')) : unit;
}

std::string shown(MemoryRegistry::Value const& value) {
    std::string text = std::to_string(value.type) + ":";
    if (value.type == REG_SZ || value.type == REG_EXPAND_SZ) {
        std::basic_string<OLECHAR> units;
        // Without the NUL at the end.
        for (std::size_t i = 0; i + 3 < value.data.size(); i += 2) {
            units.push_back(static_cast<OLECHAR>(value.data[i] | value.data[i + 1] << 8));
        }
        return text + toUtf8(units);
    }
    for (BYTE const byte : value.data) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

}  // namespace

bool MemoryRegistry::IgnoringCase::operator()(Text const& left, Text const& right) const noexcept {
    return std::lexicographical_compare(
        left.begin(), left.end(), right.begin(), right.end(),
        [](OLECHAR a, OLECHAR b) { return lowered(a) < lowered(b); });
}

LSTATUS MemoryRegistry::permit() {
    ++writes;
    if (allowed == 0) return ERROR_ACCESS_DENIED;
    --allowed;
    return ERROR_SUCCESS;
}

MemoryRegistry::Text MemoryRegistry::fullPath(KeyPath const& key) {
    Text const classes = OLESTR("Software\\Classes");
    if (key.root == HKEY_LOCAL_MACHINE && key.names.starts_with(classes)) {
        return OLESTR("HKCR") + key.names.substr(classes.size());
    }
    Text root = OLESTR("HKCR");
    if (key.root == HKEY_CURRENT_USER) root = OLESTR("HKCU");
    if (key.root == HKEY_LOCAL_MACHINE) root = OLESTR("HKLM");
    if (key.root == HKEY_USERS) root = OLESTR("HKU");
    if (key.root == HKEY_CURRENT_CONFIG) root = OLESTR("HKCC");
    return key.names.empty() ? root : root + OLESTR("\\") + key.names;
}

LSTATUS MemoryRegistry::createKey(KeyPath const& key) {
    if (LSTATUS const refused = permit()) return refused;
    Text const path = fullPath(key);
    for (auto end = path.find('\\'); end != Text::npos; end = path.find('\\', end + 1)) {
        keys_.try_emplace(path.substr(0, end));
    }
    keys_.try_emplace(path);
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::setValue(KeyPath const& key, Text const& name, DWORD type,
                                 std::span<BYTE const> data) {
    if (LSTATUS const refused = permit()) return refused;
    Text const path = fullPath(key);
    // The predefined keys are always there.
    if (path.find('\\') == Text::npos) keys_.try_emplace(path);
    auto const found = keys_.find(path);
    if (found == keys_.end()) return ERROR_FILE_NOT_FOUND;
    found->second[name] = {type, {data.begin(), data.end()}};
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::deleteValue(KeyPath const& key, Text const& name) {
    if (LSTATUS const refused = permit()) return refused;
    auto const found = keys_.find(fullPath(key));
    if (found == keys_.end() || found->second.erase(name) == 0) return ERROR_FILE_NOT_FOUND;
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::hasSubkeys(KeyPath const& key, bool& result) {
    Text const path = fullPath(key);
    if (!keys_.contains(path)) return ERROR_FILE_NOT_FOUND;
    Text const prefix = path + OLESTR("\\");
    result = std::any_of(keys_.begin(), keys_.end(), [&](auto const& entry) {
        return equalIgnoringCase(Text(entry.first, 0, prefix.size()), prefix);
    });
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::deleteKey(KeyPath const& key) {
    if (LSTATUS const refused = permit()) return refused;
    bool occupied = false;
    LSTATUS const status = hasSubkeys(key, occupied);
    if (status != ERROR_SUCCESS) return status;
    if (occupied) return ERROR_ACCESS_DENIED;
    keys_.erase(fullPath(key));
    return ERROR_SUCCESS;
}

LSTATUS MemoryRegistry::deleteTree(KeyPath const& key) {
    if (LSTATUS const refused = permit()) return refused;
    Text const path = fullPath(key);
    if (keys_.erase(path) == 0) return ERROR_FILE_NOT_FOUND;
    Text const prefix = path + OLESTR("\\");
    std::erase_if(keys_, [&](auto const& entry) {
        return equalIgnoringCase(Text(entry.first, 0, prefix.size()), prefix);
    });
    return ERROR_SUCCESS;
}

std::vector<std::string> MemoryRegistry::lines() const {
    std::vector<std::string> result;
    for (auto const& [path, values] : keys_) {
        result.push_back(toUtf8(path));
        for (auto const& [name, value] : values) {
            result.push_back(toUtf8(path) + " " + (name.empty() ? "@" : toUtf8(name)) + " = " +
                             shown(value));
        }
    }
    return result;
}

MemoryRegistry::Value const* MemoryRegistry::value(std::string const& path,
                                                   std::string const& name) const {
    auto const key = keys_.find(fromUtf8(path).value());
    if (key == keys_.end()) return nullptr;
    auto const found = key->second.find(fromUtf8(name).value());
    return found == key->second.end() ? nullptr : &found->second;
}

}  // namespace velk::com::test
