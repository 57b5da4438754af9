/// Properties of OLE property sets, read.
#pragma once

#include <windows.h>

#include <propidl.h>

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "com/owned.h"
#include "com/owners.h"

namespace velk::com {

inline void closePropVariant(PROPVARIANT& value) noexcept {
    PropVariantClear(&value);
}

/// One PROPVARIANT, VT_EMPTY when empty.
using PropVariant = Owned<PROPVARIANT, closePropVariant>;

/// Text in the bytes that a VT_LPSTR property holds, up to its NUL; scripts
/// read it as UTF-8.
struct ByteText {
    std::string bytes;
};

/// A property's value in the forms that scripts know; nothing for a value
/// without such a form.
using ScriptForm =
    std::variant<std::monostate, std::int32_t, double, bool, std::basic_string<OLECHAR>, ByteText>;

/// The value as scripts see it. A 16-bit integer is read as unsigned, which is
/// how code pages are meant; a boolean is true only as VARIANT_TRUE; a time
/// becomes the text of localTimeText. Throws std::bad_alloc.
ScriptForm readScriptForm(PROPVARIANT const& value);

/// The time in the current time zone as DD.MM.YYYY hh:mm:ss.zzz, for instance
/// "05.03.2024 09:07:04.045": in UTC when it cannot be converted to the zone,
/// and empty when it is no time (beyond the year 30827).
std::basic_string<OLECHAR> localTimeText(FILETIME const& time);

/// One property of a set.
struct StoredProperty {
    PROPID id = 0;
    std::optional<std::basic_string<OLECHAR>> name;
    /// The property's own type as the enumeration tells it.
    VARTYPE type = VT_EMPTY;
    PropVariant value;

    /// What scripts find it under: its name, or its id in decimal.
    std::basic_string<OLECHAR> key() const;
};

/// Reads the next property that `from`, an enumeration of `set`, tells of.
/// Properties whose value cannot be read are passed over.
/// Result: S_OK, or anything else at the end of the enumeration, and `out` is
/// then unchanged. Throws std::bad_alloc.
HRESULT readNextProperty(IEnumSTATPROPSTG& from, IPropertyStorage& set, StoredProperty& out);

}  // namespace velk::com
