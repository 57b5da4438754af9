/// The process's environment, as far as it counts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace velk::platform {

/// Whether this program runs with more rights than the user who started it.
bool isPrivileged() noexcept;

/// A variable, or null when it is not set. A privileged program has none: they
/// are its caller's.
char const* environment(char const* name) noexcept;

/// An absolute path in a variable; empty when there is none.
std::string pathVariable(char const* name);

/// The effective user's own folder; empty when there is none.
std::string homeFolder();

/// A text with each %NAME% replaced by the variable, if there is one. Nothing
/// when it has more than the published 32767 units before or after.
std::optional<std::u16string> withVariables(std::u16string_view text);

}  // namespace velk::platform
