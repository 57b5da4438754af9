/// UTF-8 and UTF-16.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <windows.h>

namespace velk::com {

/// UTF-16 text as UTF-8; half a surrogate pair becomes U+FFFD.
std::string toUtf8(std::basic_string_view<OLECHAR> text);

/// UTF-8 text as UTF-16, or nothing when the bytes are not valid UTF-8
/// (overlong forms, surrogates and code points above U+10FFFF included).
std::optional<std::basic_string<OLECHAR>> fromUtf8(std::string_view bytes);

/// The same for bytes of any kind: each byte that begins no valid sequence
/// becomes U+FFFD.
std::basic_string<OLECHAR> fromUtf8Leniently(std::string_view bytes);

/// Whether two texts are equal when the letters A-Z count as a-z.
bool equalIgnoringCase(std::basic_string_view<OLECHAR> left,
                       std::basic_string_view<OLECHAR> right) noexcept;

}  // namespace velk::com
