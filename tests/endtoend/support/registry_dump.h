/// The registry as a table of texts.
#pragma once

#include <functional>
#include <map>
#include <string>

#include <windows.h>

namespace velk::test {

/// "key\key" to nothing for every key, and "key\key:value" to its text for
/// every value, the default one without a name. Values that are no text appear
/// by their type number.
using RegistryTable = std::map<std::string, std::string>;

/// Everything below `key` of one of the predefined keys, where `enter` says of
/// each key whether to look into it; empty when the key does not exist.
RegistryTable dumpRegistry(HKEY root, std::string const& key,
                           std::function<bool(std::string const&)> const& enter);

bool keyExists(HKEY root, std::string const& key);

/// Writes a text, making the key where needed.
void writeText(HKEY root, std::string const& key, std::string const& name, std::string const& text);

/// Deletes a key with everything below it.
void deleteKey(HKEY root, std::string const& key);

std::basic_string<OLECHAR> wide(std::string const& utf8);
std::string narrow(std::basic_string<OLECHAR> const& text);

}  // namespace velk::test
