/// Text between the two encodings in use: UTF-16 at the published interfaces,
/// the system's bytes (UTF-8) everywhere else.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velk::platform {

/// The system's bytes as UTF-16. A byte that is not part of valid UTF-8
/// becomes the lone surrogate 0xDC00 + byte, so that every file name has a
/// form that toBytes turns back into the same name.
std::u16string toUtf16(std::string_view bytes);

/// UTF-16 as the system's bytes; undoes toUtf16. Other lone surrogates become
/// U+FFFD.
std::string toBytes(std::u16string_view text);

/// The one file name or path that toUtf16 turns into this text; nothing for a
/// text that is the form of none. Half a character would otherwise become
/// U+FFFD, or two halves a whole one, and that is another file's name.
std::optional<std::string> toFileName(std::u16string_view text);

/// An upper-case letter for an ASCII letter, everything else unchanged.
constexpr char16_t upperAscii(char16_t unit) noexcept {
    return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit;
}

/// Whether two texts are equal but for the case of ASCII letters.
bool equalNoAsciiCase(std::u16string_view left, std::u16string_view right) noexcept;

}  // namespace velk::platform
