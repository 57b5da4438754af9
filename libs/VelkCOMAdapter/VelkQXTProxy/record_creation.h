#pragma once

#include "VelkQXTProxy/held_value.h"
#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// The member "Create" for a record (type code, native object, name): makes
/// the empty record of that name in the library that describes the object.
/// What is held then must be the empty value of VT_RECORD, and stays so when
/// it fails. `mzMemberNotFound` for another argument count.
unsigned createRecord(MemberCall const& call, HeldValue& held);

}  // namespace velk::adapter
