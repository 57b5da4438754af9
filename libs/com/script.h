/// A registry script as read.
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
#include <string>
#include <vector>

#include <windows.h>

namespace velk::com {

/// Type and bytes of a value as the registry stores them.
struct ScriptData {
    DWORD type;
    std::vector<BYTE> bytes;
};

/// A named value.
struct ScriptValue {
    std::basic_string<OLECHAR> name;
    ScriptData data;
};

/// What becomes of a key.
enum class KeyRule {
    normal,       ///< made; deleted again when nothing remains below it
    noRemove,     ///< made; stays
    forceRemove,  ///< made anew, without what was there; deleted whole
    remove        ///< deleted whole by registration; nothing to take back
};

/// A key with its values and the keys below it, each in the script's order.
struct ScriptKey {
    std::basic_string<OLECHAR> name;
    KeyRule rule = KeyRule::normal;
    std::optional<ScriptData> defaultValue;
    std::vector<ScriptValue> values;
    std::vector<ScriptKey> keys;
};

/// What stands under one of the predefined keys.
struct ScriptRoot {
    HKEY root;
    std::vector<ScriptValue> values;
    std::vector<ScriptKey> keys;
};

using Script = std::vector<ScriptRoot>;

}  // namespace velk::com
