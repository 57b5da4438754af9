#pragma once

#include "VelkQXTProxy/held_value.h"
#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// The member "Create" for an array (0x2000, type code of the elements, number
/// of elements of each dimension): holds a new array whose indices start at 0.
/// `mzFailure`, without an exception, for what makes no array.
unsigned createArray(MemberCall const& call, HeldValue& held);

}  // namespace velk::adapter
