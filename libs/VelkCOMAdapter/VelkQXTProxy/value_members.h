/// What the members of a value's wrapper do, by what is held.
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

/// The member "Create" for a record (type code, native object, name): makes
/// the empty record of that name in the library that describes the object.
/// What is held then must be the empty value of VT_RECORD, and stays so when
/// it fails. `mzMemberNotFound` for another argument count.
unsigned createRecord(MemberCall const& call, HeldValue& held);

/// Reads or writes a field of a record: the only members that it has.
unsigned accessRecord(MemberCall const& call, VARIANT const& record);

/// The member "ChangeType", with at least one argument: the value, or the
/// native form of an object in its place, as another type; or a new object
/// that calls the held interface pointer by a type of a type library.
unsigned changeType(MemberCall const& call, HeldValue& held);

}  // namespace velk::adapter
