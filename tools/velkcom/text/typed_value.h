/// From arguments as written to automation values.
#pragma once

#include <string>

#include "com/owners.h"
#include "text/member_path.h"

namespace velk::velkcom {

/// The value that an argument stands for: "type:text" with one of the types
/// of the help text, a word such as "null", or a guess (integer, number,
/// true or false, else text).
/// Throws UsageError when the text is not of the type that it names.
com::Variant readValue(WrittenArgument const& argument);

}  // namespace velk::velkcom
