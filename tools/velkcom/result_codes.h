/// Result codes as people read them.
#pragma once

#include <string>

#include <windows.h>

namespace velk::velkcom {

/// "DISP_E_UNKNOWNNAME (0x80020006)", or the number alone for a code without
/// a known symbol.
std::string describeCode(HRESULT code);

/// What a code means, in a few words; empty when it has no known symbol.
std::string meaningOfCode(HRESULT code);

}  // namespace velk::velkcom
