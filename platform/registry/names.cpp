#include "platform/registry/names.h"

#include <algorithm>
#include <clocale>
#include <cwctype>

#include "platform/registry/registry_error.h"
#include "platform/system/utf16.h"

namespace velk::platform::registry {
namespace {

/// Upper case as the C library knows it, whatever locale the program runs in.
char16_t upper(char16_t unit) {
    if (unit < 0x80) return upperAscii(unit);
    static locale_t const everywhere = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (everywhere == nullptr) return unit;
    auto const folded = towupper_l(unit, everywhere);
    return folded <= 0xFFFF ? static_cast<char16_t>(folded) : unit;
}

}  // namespace

Name::Name(std::u16string_view name) : text(name) {
    folded.reserve(name.size() * 2);
    for (char16_t const unit : name) {
        char16_t const large = upper(unit);
        folded.push_back(static_cast<char>(large >> 8));
        folded.push_back(static_cast<char>(large & 0xFF));
    }
}

KeyPath splitPath(LPCWSTR path) {
    KeyPath names;
    std::u16string_view rest = path == nullptr ? u"" : path;
    failIf(!rest.empty() && rest[0] == u'\\', ERROR_BAD_PATHNAME);
    while (!rest.empty()) {
        auto const name = rest.substr(0, rest.find(u'\\'));
        failIf(name.size() > longestKeyName, ERROR_INVALID_PARAMETER);
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) names.emplace_back(name);
    }
    return names;
}

Name valueName(LPCWSTR name) {
    std::u16string_view const text = name == nullptr ? u"" : name;
    failIf(text.size() > longestValueName, ERROR_INVALID_PARAMETER);
    return Name(text);
}

}  // namespace velk::platform::registry
