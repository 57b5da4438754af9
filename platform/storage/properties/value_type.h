/// The types that values of properties have.
#pragma once

#include <cstddef>
#include <span>

#include <propidl.h>

namespace velk::platform::storage {

/// How a value, or an element of a vector, is held in memory.
enum class Form {
    unknown,
    fixed,      ///< its bytes stand in the value, as they stand in a file
    byteText,   ///< VT_LPSTR
    wideText,   ///< VT_LPWSTR
    bstr,       ///< VT_BSTR
    blob,       ///< a size and a pointer
    clipboard,  ///< VT_CF
    classId,    ///< VT_CLSID
    object,     ///< an interface pointer
    versioned,  ///< VT_VERSIONED_STREAM
    variant,    ///< VT_VARIANT, an element of vectors and arrays only
    array       ///< VT_ARRAY of anything
};

/// How deep values may stand in vectors of values.
inline constexpr std::size_t deepestValue = 4;

struct ValueType {
    Form form = Form::unknown;
    /// Of Form::fixed, in bytes.
    std::size_t size = 0;
    /// Of an element of a vector in memory, in bytes; 0 where vectors of the
    /// type are not published.
    std::size_t elementSize = 0;
};

/// The type of a value without its VT_VECTOR. Form::unknown for a type that no
/// value can have.
ValueType valueType(VARTYPE type) noexcept;

constexpr bool isVector(VARTYPE type) noexcept {
    return (type & VT_VECTOR) != 0;
}
constexpr VARTYPE elementType(VARTYPE type) noexcept {
    return static_cast<VARTYPE>(type & ~VT_VECTOR);
}

/// Whether a value can be of the type: a known one, or a vector of one that has
/// vectors.
bool isValueType(VARTYPE type) noexcept;

/// The bytes of a value where its type keeps them: behind the type and the
/// reserved words, but for VT_DECIMAL, which begins with them.
std::span<std::byte> fixedBytes(PROPVARIANT& value, ValueType const& type) noexcept;
std::span<std::byte const> fixedBytes(PROPVARIANT const& value, ValueType const& type) noexcept;

}  // namespace velk::platform::storage
