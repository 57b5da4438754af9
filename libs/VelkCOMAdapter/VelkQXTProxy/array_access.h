#pragma once

#include <optional>

#include <windows.h>

#include <oleauto.h>

#include "VelkQXTProxy/held_value.h"
#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// The array that a value owns; null for other values.
SAFEARRAY* arrayIn(VARIANT const& value);

/// The members of an array: its bounds, and its elements by index. Nothing
/// when the call is none of them.
std::optional<unsigned> accessArray(MemberCall const& call, VARIANT const& value);

/// The member "Create" for an array (0x2000, type code of the elements, number
/// of elements of each dimension): holds a new array whose indices start at 0.
/// `mzFailure`, without an exception, for what makes no array.
unsigned createArray(MemberCall const& call, HeldValue& held);

}  // namespace velk::adapter
