/// One late-bound call.
#pragma once

#include <string>
#include <vector>

#include "com/owners.h"
#include "command_line.h"
#include "commands/object_creation.h"

namespace velk::velkcom {

/// Calls `member` of `object` with `arguments`, in the order in which they
/// are written. The empty name is the default member. Throws CallFailure.
com::Variant callMember(IDispatch* object, std::string const& member,
                        std::vector<com::Variant> const& arguments, Access access);

}  // namespace velk::velkcom
