#pragma once

#include "VelkQXTProxy/held_value.h"
#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// The member "ChangeType", with at least one argument: the value, or the
/// native form of an object in its place, as another type; or a new object
/// that calls the held interface pointer by a type of a type library.
unsigned changeType(MemberCall const& call, HeldValue& held);

}  // namespace velk::adapter
