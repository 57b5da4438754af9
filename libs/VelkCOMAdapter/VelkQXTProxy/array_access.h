#pragma once

#include <optional>

#include <windows.h>

#include <oleauto.h>

#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// The array that a value owns; null for other values.
SAFEARRAY* arrayIn(VARIANT const& value);

/// The members of an array: its bounds, and its elements by index. Nothing
/// when the call is none of them.
std::optional<unsigned> accessArray(MemberCall const& call, VARIANT const& value);

}  // namespace velk::adapter
