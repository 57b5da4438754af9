/// Resources of modules in the format of Windows.
#pragma once

#include <optional>
#include <string_view>

#include "platform/typelib/byte_view.h"

namespace velk::typelib {

/// Whether `file` begins like a module in the portable executable format.
bool isPortableExecutable(ByteView file);

/// The first resource of a named type and a number, of whatever language.
/// Nothing where there is none; a damaged module fails with a ResultError,
/// TYPE_E_INVDATAREAD.
std::optional<ByteView> portableResource(ByteView file, std::u16string_view type, WORD number);

}  // namespace velk::typelib
