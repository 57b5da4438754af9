/// How a registry script writes the data of values.
#pragma once

#include <optional>

#include "com/owners.h"
#include "com/registration/script.h"

namespace velk::com {

/// Reads the text of one type of data.
struct ScriptDataReader {
    OLECHAR letter;
    /// For messages: what the text should have been.
    char const* expected;
    /// The data, or nothing when the text is not of that type.
    std::optional<RegistryScriptData> (*read)(TextView text);
};

/// The reader of a type, given its letter in either case; null for others.
ScriptDataReader const* findDataReader(TextView type) noexcept;

}  // namespace velk::com
