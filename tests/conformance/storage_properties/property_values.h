/// Values of properties of every kind.
#pragma once

#include <span>
#include <string>

#include "conformance/storage_properties/property_set_file.h"

namespace velk::test {

/// One kind of values.
struct ValueKind {
    VARTYPE type;
    /// Of an element of a vector or an array, in bytes.
    std::size_t size;
    /// Where it can stand: (a)lone, in a (v)ector, in an a(r)ray; and whether
    /// those with the difference "property-types" keep it alone (w).
    char const* ways;
};
std::span<ValueKind const> valueKinds();

/// Makes a value of a type, VT_VECTOR and VT_ARRAY included, that follows from
/// the number.
void makeValue(VARTYPE type, unsigned number, PROPVARIANT& value);

/// All that a value holds, its type first: bytes as numbers, texts as UTF-8.
std::string valueText(PROPVARIANT const& value);

}  // namespace velk::test
