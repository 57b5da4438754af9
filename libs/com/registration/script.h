/// Registry scripts: where their text comes from, what it says, and how it is
/// carried out.
///
///   script      = root { root }
///   root        = root-name block
///   root-name   = HKEY_CLASSES_ROOT | HKCR | HKEY_CURRENT_USER | HKCU
///               | HKEY_LOCAL_MACHINE | HKLM | HKEY_USERS | HKU
///               | HKEY_CURRENT_CONFIG | HKCC
///   block       = "{" { item } "}"
///   item        = [ "NoRemove" | "ForceRemove" ] name [ "=" data ] [ block ]
///               | "Delete" name
///               | "val" name "=" data
///   data        = type text
///   type        = "s" | "e" | "d" | "b" | "m"
///
/// Words are set apart by blanks, and so are "{", "}" and "=": "{" inside a
/// longer word, as a GUID has it, is part of the word. Text in single quotes
/// is one word, never a keyword, and may hold blanks; a quote in it is written
/// twice. Keywords, types and root names have no case. "%NAME%" anywhere,
/// quotes included, is replaced by its value before the text is read, and "%%"
/// stands for one "%". Two slashes where a word could begin make the rest of
/// the line a comment.
///
/// Types: s text, e text with environment variables, d an unsigned 32-bit
/// number (decimal, or hexadecimal after "0x" or "&H"), b bytes as pairs of
/// hexadecimal digits, m a list of texts, each followed by "\0".
#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include <windows.h>

#include "com/owners.h"

namespace velk::com {

class Registry;

/// Type and bytes of a value as the registry stores them.
struct RegistryScriptData {
    DWORD type;
    std::vector<BYTE> bytes;
};

/// A named value.
struct RegistryScriptValue {
    std::basic_string<OLECHAR> name;
    RegistryScriptData data;
};

/// What becomes of a key.
enum class KeyRule {
    normal,       ///< made; deleted again when nothing remains below it
    noRemove,     ///< made; stays
    forceRemove,  ///< made anew, without what was there; deleted whole
    remove        ///< deleted whole by registration; nothing to take back
};

/// A key with its values and the keys below it, each in the script's order.
struct RegistryScriptKey {
    std::basic_string<OLECHAR> name;
    KeyRule rule = KeyRule::normal;
    std::optional<RegistryScriptData> defaultValue;
    std::vector<RegistryScriptValue> values;
    std::vector<RegistryScriptKey> keys;
};

/// What stands under one of the predefined keys.
struct RegistryScriptRoot {
    HKEY root;
    std::vector<RegistryScriptValue> values;
    std::vector<RegistryScriptKey> keys;
};

using RegistryScript = std::vector<RegistryScriptRoot>;

/// A name that scripts write as %NAME%, and the text that it stands for.
struct Replacement {
    std::basic_string<OLECHAR> name;
    std::basic_string<OLECHAR> value;
};

/// Script text from bytes: UTF-16, little-endian, when they begin with its
/// byte-order mark, else UTF-8 with or without one. Throws Error with
/// HRESULT_FROM_WIN32(ERROR_INVALID_DATA) for bytes that are neither.
std::basic_string<OLECHAR> decodeScript(std::string_view bytes);

/// The text of resource `id` of type "REGISTRY". Throws Error with the
/// system's code when `module` has no such resource, or as decodeScript.
std::basic_string<OLECHAR> loadScript(HMODULE module, WORD id);

/// Reads a whole script. Throws Error with line, column and what was expected
/// at the first mistake.
RegistryScript parseScript(TextView text, std::span<Replacement const> replacements);

/// Writes what the script describes. Throws Error with the path of the key at
/// the first refused operation; what was written before it stays.
void installScript(RegistryScript const& script, Registry& registry, bool perUser);

/// Takes back what installScript wrote: values are removed, a key marked
/// "NoRemove" stays, one marked "ForceRemove" goes with everything below it,
/// any other goes after the keys below it were handled, provided none is left.
/// What does not exist is no failure. Throws Error as installScript does.
void removeScript(RegistryScript const& script, Registry& registry, bool perUser);

}  // namespace velk::com
