#include "platform/registry/names.h"

#include <algorithm>
#include <cstring>

#include "platform/system/boundary.h"
#include "platform/system/letter_case.h"

namespace velk::platform::registry {

Name::Name(std::u16string_view name) : text(name) {
    folded.reserve(name.size() * 2);
    for (char16_t const unit : name) {
        char16_t const large = upperCase(unit);
        folded.push_back(static_cast<char>(large >> 8));
        folded.push_back(static_cast<char>(large & 0xFF));
    }
}

std::u16string textOf(std::string_view bytes) {
    std::u16string text(bytes.size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
    return text;
}

KeyPath splitPath(LPCWSTR path) {
    KeyPath names;
    std::u16string_view rest = path == nullptr ? u"" : path;
    require(!rest.starts_with(u'\\'), ERROR_BAD_PATHNAME);
    while (!rest.empty()) {
        auto const name = rest.substr(0, rest.find(u'\\'));
        require(name.size() <= longestKeyName, ERROR_INVALID_PARAMETER);
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) names.emplace_back(name);
    }
    return names;
}

Name valueName(LPCWSTR name) {
    std::u16string_view const text = name == nullptr ? u"" : name;
    require(text.size() <= longestValueName, ERROR_INVALID_PARAMETER);
    return Name(text);
}

}  // namespace velk::platform::registry
