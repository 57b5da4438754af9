/// From the text of a registry script to its keys and values.
#pragma once

#include <span>

#include "com/registrar.h"
#include "com/script.h"

namespace velk::com {

/// Reads a whole script. Throws Error with line, column and what was expected
/// at the first mistake.
Script parseScript(TextView text, std::span<Replacement const> replacements);

}  // namespace velk::com
