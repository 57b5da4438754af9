/// Names of keys and values: their limits, and the form in which they compare.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <windef.h>

namespace velk::platform::registry {

/// Published limits, in UTF-16 units.
inline constexpr std::size_t longestKeyName = 255;
inline constexpr std::size_t longestValueName = 16383;
inline constexpr int deepestKey = 512;
/// Of a value's data, in bytes; the layer's own.
inline constexpr int longestValue = 1 << 20;

/// A name and the form in which names are compared and ordered: each unit in
/// upper case, as two bytes with the higher first.
struct Name {
    std::u16string text;
    std::string folded;

    Name() = default;
    explicit Name(std::u16string_view name);
};

/// The names in a path, from the outermost on. Several separators count as
/// one, and one at the end counts for nothing. Fails with ERROR_BAD_PATHNAME
/// when one stands in front, with ERROR_INVALID_PARAMETER when a name is too
/// long. A null path is empty.
using KeyPath = std::vector<Name>;
KeyPath splitPath(LPCWSTR path);

/// Bytes as UTF-16; half a unit at the end is left out.
std::u16string textOf(std::string_view bytes);

/// The name of a value; null and empty both mean the default value. Fails
/// with ERROR_INVALID_PARAMETER when it is too long.
Name valueName(LPCWSTR name);

}  // namespace velk::platform::registry
