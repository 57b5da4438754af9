/// Values of document properties, from and to the host.
#pragma once

#include "com/stored_properties.h"
#include "host/variant.h"

namespace velk::adapter {

/// The host value of a property; empty for a type that scripts do not know.
mzComVariantC propVariantToHost(PROPVARIANT const& value);

/// The property value of a host value: an integer as VT_I4, a floating point
/// number as VT_R8, text as VT_LPWSTR, and anything else that can be read as
/// text as VT_LPSTR in UTF-8. False, and `result` empty, when it cannot be
/// read, and when the memory is not there.
bool hostToPropVariant(mzComVariantC const& value, com::PropVariant& result);

}  // namespace velk::adapter
