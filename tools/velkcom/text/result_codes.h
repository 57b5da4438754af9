/// Result codes as people read them.
#pragma once

#include <string>

#include <windows.h>

#include "com/error.h"

namespace velk::velkcom {

/// "DISP_E_UNKNOWNNAME (0x80020006)", or the number alone for a code without
/// a known symbol.
std::string describeCode(HRESULT code);

/// What a code means, in a few words; empty when it has no known symbol.
std::string meaningOfCode(HRESULT code);

/// The text of an error, and what its code means in parentheses.
std::string withMeaning(com::Error const& error);

}  // namespace velk::velkcom
