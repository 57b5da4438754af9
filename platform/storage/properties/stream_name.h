/// The names of the streams that property sets are kept in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <propidl.h>

namespace velk::platform::storage {

/// What the name of every such stream begins with.
inline constexpr char16_t setNameMark = u'\5';

/// The name of the stream of a set: a given one for the summary sets, the
/// format id in 26 letters and digits for all others.
std::u16string streamNameOf(REFFMTID formatId);

/// The reverse, without regard to case. Nothing for a name that is none.
std::optional<FMTID> formatIdOf(std::u16string_view streamName);

}  // namespace velk::platform::storage
