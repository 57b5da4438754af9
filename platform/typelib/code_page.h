/// Texts of type libraries, which are stored in the code page of their locale.
#pragma once

#include <string>
#include <string_view>

#include "wtypes.h"

namespace velk::typelib {

/// `bytes` from the code page that belongs to `lcid`; bytes that mean nothing
/// there become U+FFFD. Locales without a code page of their own take the
/// Western European one.
std::u16string fromCodePage(std::string_view bytes, LCID lcid);

}  // namespace velk::typelib
