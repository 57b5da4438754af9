/// How registered libraries are laid out in the registry.
///
///   TypeLib\{library}\major.minor            help string; numbers in hexadecimal
///   TypeLib\{library}\major.minor\lcid\win64 path of the file
///   TypeLib\{library}\major.minor\FLAGS      library flags, decimal
///   TypeLib\{library}\major.minor\HELPDIR    folder of the help file
///   Interface\{interface}\ProxyStubClsid32   who marshals it
///   Interface\{interface}\TypeLib            library, and its version as value "Version"
#pragma once

#include <string>

#include "oleauto.h"

namespace velk::typelib {

/// "{00020430-0000-0000-C000-000000000046}"
std::u16string guidText(REFGUID id);
/// Lower-case, without leading zeros.
std::u16string hexadecimalText(unsigned value);
/// "1.a" for version 1.10.
std::u16string versionText(WORD major, WORD minor);
/// "win64" and its kin; empty for a system that does not exist.
std::u16string systemText(SYSKIND system);
/// "TypeLib\{...}"
std::u16string libraryKeyName(REFGUID id);

}  // namespace velk::typelib
