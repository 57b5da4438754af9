/// The case of letters beyond ASCII.
#pragma once

namespace velk::platform {

/// The upper-case form of one UTF-16 unit, as the C library knows it, whatever
/// locale the program runs in; the unit itself where there is none.
char16_t upperCase(char16_t unit);

}  // namespace velk::platform
