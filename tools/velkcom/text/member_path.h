/// The way from an object to a member of it, or of what its members give.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "usage_error.h"

namespace velk::velkcom {

/// An argument as written; one in quotes is text whatever it looks like.
struct WrittenArgument {
    std::string text;
    bool quoted = false;
    bool operator==(WrittenArgument const&) const = default;
};

/// One member, with the arguments in its parentheses.
struct MemberStep {
    std::string name;  ///< empty for the default member
    std::vector<WrittenArgument> arguments;
    bool operator==(MemberStep const&) const = default;
};

/// Reads "Name(argument, "text", ...).Name...": steps with dots between them.
/// Arguments end at a comma or the closing parenthesis and lose the blanks
/// around them; those in double quotes keep everything, and a double quote
/// inside is written twice. The last name may be empty, for the default member.
/// Throws UsageError with the place of the mistake, counted from 1.
std::vector<MemberStep> parseMemberPath(std::string_view path);

}  // namespace velk::velkcom
