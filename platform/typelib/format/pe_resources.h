/// Resources of modules in the format of Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/typelib/format/byte_view.h"

namespace velk::typelib {

/// Bytes of a file: `size` of them from `offset` on. Fails with a Failure
/// where the file has no such bytes.
using ReadBytes = std::function<std::vector<std::byte>(std::uint64_t offset, std::size_t size)>;

/// Whether a file that begins so is a module in the portable executable format.
bool isPortableExecutable(ByteView beginning);

/// The first resource of a named type and a number, of whatever language.
/// Nothing where there is none; a damaged module fails with a Failure,
/// TYPE_E_INVDATAREAD. Reads the headers and the resources, and nothing else.
std::optional<std::vector<std::byte>> portableResource(ReadBytes const& read,
                                                       std::u16string_view type, WORD number);

}  // namespace velk::typelib
