/// The steps of VariantChangeTypeEx, one function for each family of types.
#pragma once

#include "oleauto.h"

namespace velk::platform {

/// What holds for the whole of one conversion.
struct Conversion {
    LCID id;             ///< as the caller gave it; handed on to objects
    USHORT flags;        ///< VARIANT_ flags
    VARTYPE type;        ///< the type that is asked for
    unsigned depth = 0;  ///< how many default values stand behind the source
};

/// Converts `source`, which is a plain value (no reference, array, object,
/// VT_NULL, VT_ERROR or record) of another type than the one asked for, into
/// `result`, which is fresh. On failure `result` owns nothing.
using Converter = HRESULT (*)(VARIANT const& source, Conversion const& conversion, VARIANT& result);

HRESULT toInteger(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toFloating(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toDate(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toCurrency(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toDecimal(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toBoolean(VARIANT const& source, Conversion const& conversion, VARIANT& result);
HRESULT toText(VARIANT const& source, Conversion const& conversion, VARIANT& result);

/// The value that a VT_BYREF source points at, borrowed: `value` is not to be
/// cleared. Sources that are no reference are given back as they are.
/// DISP_E_TYPEMISMATCH for a null reference, E_INVALIDARG for a reference to
/// a reference to a VARIANT.
HRESULT borrowReferenced(VARIANT const& source, VARIANT& value) noexcept;

/// The whole conversion of any source into a fresh `result`.
HRESULT convertValue(VARIANT const& source, Conversion const& conversion, VARIANT& result);

}  // namespace velk::platform
