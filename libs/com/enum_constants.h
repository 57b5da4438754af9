/// Constants of enumerations in type libraries.
#pragma once

#include <cstdint>
#include <optional>

#include "com/com_ptr.h"
#include "com/owners.h"

namespace velk::com {

/// The low 32 bits of the constant `constant` of the first enumeration named
/// `enumeration` that has one; nothing when none has. Names match code unit by
/// code unit. Entries that cannot be read are passed over.
std::optional<std::int32_t> findEnumConstant(ComPtr<ITypeLib> const& library, TextView enumeration,
                                             TextView constant);

}  // namespace velk::com
