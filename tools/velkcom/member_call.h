/// One late-bound call.
#pragma once

#include <string>
#include <vector>

#include "com/owners.h"
#include "command_line.h"

namespace velk::velkcom {

/// Why a call failed, in words for people, several lines where the object
/// said more.
class CallFailure : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Calls `member` of `object` with `arguments`, in the order in which they
/// are written. The empty name is the default member. Throws CallFailure.
com::Variant callMember(IDispatch* object, std::string const& member,
                        std::vector<com::Variant> const& arguments, Access access);

}  // namespace velk::velkcom
