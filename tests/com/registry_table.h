/// A registry as a table of texts.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>

#include <windows.h>

namespace velk::com::test {

/// "KEY\KEY" to nothing for every key, and "KEY\KEY:NAME" to what shown() makes
/// of it for every value, the default one without a name.
using RegistryTable = std::map<std::string, std::string>;

/// The type's number, and text as text or else bytes: "1:text", "4:ff000000".
std::string shown(DWORD type, std::span<BYTE const> data);

/// A line an entry.
std::string textOf(RegistryTable const& table, std::string const& separator);

/// Everything below `key` of one of the predefined keys, where `enter` says of
/// each key whether to look into it; empty when the key does not exist.
RegistryTable dumpRegistry(
    HKEY root, std::string const& key,
    std::function<bool(std::string const&)> const& enter = [](auto&) { return true; });

bool keyExists(HKEY root, std::string const& key);

/// Writes a key's default value, making the key where needed.
void writeText(HKEY root, std::string const& key, std::string const& text);

/// Deletes a key with everything below it.
void deleteKey(HKEY root, std::string const& key);

}  // namespace velk::com::test
