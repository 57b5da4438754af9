#pragma once

#include <windows.h>

#include <oleauto.h>

#include "VelkQXTProxy/member_call.h"

namespace velk::adapter {

/// Reads or writes a field of a record: the only members that it has.
unsigned accessRecord(MemberCall const& call, VARIANT const& record);

}  // namespace velk::adapter
