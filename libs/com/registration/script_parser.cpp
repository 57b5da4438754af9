#include <utility>

#include "com/registration/script.h"
#include "com/registration/script_data.h"
#include "com/registration/script_reader.h"
#include "com/utf.h"

namespace velk::com {
namespace {

// Published limits of the registry: levels of keys, and units of UTF-16 in
// the names of a key and of a value.
constexpr unsigned longestPath = 512;
constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;

struct RootName {
    OLECHAR const* full;
    OLECHAR const* brief;
    HKEY key;
};

HKEY findRoot(TextView name) noexcept {
    static RootName const roots[] = {
        {OLESTR("HKEY_CLASSES_ROOT"), OLESTR("HKCR"), HKEY_CLASSES_ROOT},
        {OLESTR("HKEY_CURRENT_USER"), OLESTR("HKCU"), HKEY_CURRENT_USER},
        {OLESTR("HKEY_LOCAL_MACHINE"), OLESTR("HKLM"), HKEY_LOCAL_MACHINE},
        {OLESTR("HKEY_USERS"), OLESTR("HKU"), HKEY_USERS},
        {OLESTR("HKEY_CURRENT_CONFIG"), OLESTR("HKCC"), HKEY_CURRENT_CONFIG}};
    for (auto const& root : roots) {
        if (equalIgnoringCase(name, root.full) || equalIgnoringCase(name, root.brief)) {
            return root.key;
        }
    }
    return nullptr;
}

std::string shown(ScriptToken const& token) {
    return token.kind == ScriptTokenKind::end ? "the end of the script"
                                              : "\"" + toUtf8(token.text) + "\"";
}

class Parser {
  public:
    Parser(TextView text, std::span<Replacement const> replacements)
        : words_(text, replacements), token_(words_.next()) {}

    RegistryScript script() {
        RegistryScript result;
        do {
            result.push_back(root());
        } while (token_.kind != ScriptTokenKind::end);
        return result;
    }

  private:
    RegistryScriptRoot root() {
        HKEY const key = token_.kind == ScriptTokenKind::word ? findRoot(token_.text) : nullptr;
        if (key == nullptr) {
            expected("a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name)");
        }
        advance();
        RegistryScriptRoot result{key, {}, {}};
        block(result.values, result.keys, 1);
        return result;
    }

    void block(std::vector<RegistryScriptValue>& values, std::vector<RegistryScriptKey>& keys,
               unsigned level) {
        if (token_.kind != ScriptTokenKind::open) expected("\"{\"");
        ScriptPosition const opened = token_.position;
        if (level > longestPath) {
            throwScriptError(opened, "keys are nested more than 512 levels deep");
        }
        advance();
        while (token_.kind != ScriptTokenKind::close) {
            if (token_.kind == ScriptTokenKind::end) {
                throwScriptError(token_.position,
                                 "expected \"}\" that closes the block opened at " +
                                     std::to_string(opened.line) + ":" +
                                     std::to_string(opened.column));
            }
            if (takeKeyword(OLESTR("val"))) {
                values.push_back(value());
            } else {
                keys.push_back(key(level));
            }
        }
        advance();
    }

    RegistryScriptValue value() {
        RegistryScriptValue result;
        result.name = name("the name of a value", longestValueName);
        if (token_.kind != ScriptTokenKind::equals) expected("\"=\"");
        result.data = data();
        return result;
    }

    RegistryScriptKey key(unsigned level) {
        RegistryScriptKey result;
        if (takeKeyword(OLESTR("Delete"))) {
            result.rule = KeyRule::remove;
            result.name = keyName();
            return result;
        }
        if (takeKeyword(OLESTR("NoRemove"))) {
            result.rule = KeyRule::noRemove;
        } else if (takeKeyword(OLESTR("ForceRemove"))) {
            result.rule = KeyRule::forceRemove;
        }
        result.name = keyName();
        if (token_.kind == ScriptTokenKind::equals) result.defaultValue = data();
        if (token_.kind == ScriptTokenKind::open) block(result.values, result.keys, level + 1);
        return result;
    }

    std::basic_string<OLECHAR> keyName() {
        ScriptPosition const position = token_.position;
        auto result = name("the name of a key", longestKeyName);
        if (result.find(OLECHAR{'\\'}) != result.npos) {
            throwScriptError(position, "the name of a key must not contain \"\\\"");
        }
        return result;
    }

    std::basic_string<OLECHAR> name(char const* what, std::size_t longest) {
        if (!atText()) expected(what);
        if (token_.text.empty()) {
            throwScriptError(token_.position,
                             std::string("expected ") + what + ", which must not be empty");
        }
        if (token_.text.size() > longest) {
            throwScriptError(token_.position, std::string(what) + " has more than " +
                                                  std::to_string(longest) + " characters");
        }
        return take();
    }

    // At "=".
    RegistryScriptData data() {
        advance();
        auto const reader =
            token_.kind == ScriptTokenKind::word ? findDataReader(token_.text) : nullptr;
        if (reader == nullptr) expected("a type (s, e, d, b or m)");
        advance();
        if (!atText()) expected("the data of the value");
        std::optional<RegistryScriptData> result = reader->read(token_.text);
        if (!result) expected(reader->expected);
        advance();
        return *std::move(result);
    }

    bool atText() const noexcept {
        return token_.kind == ScriptTokenKind::word || token_.kind == ScriptTokenKind::quoted;
    }
    bool takeKeyword(TextView keyword) {
        if (token_.kind != ScriptTokenKind::word || !equalIgnoringCase(token_.text, keyword)) {
            return false;
        }
        advance();
        return true;
    }
    std::basic_string<OLECHAR> take() {
        auto text = std::move(token_.text);
        advance();
        return text;
    }
    void advance() { token_ = words_.next(); }
    [[noreturn]] void expected(std::string const& what) const {
        throwScriptError(token_.position, "expected " + what + " but found " + shown(token_));
    }

    ScriptWords words_;
    ScriptToken token_;
};

}  // namespace

RegistryScript parseScript(TextView text, std::span<Replacement const> replacements) {
    return Parser(text, replacements).script();
}

}  // namespace velk::com
