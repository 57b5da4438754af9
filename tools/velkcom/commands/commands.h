/// The commands, each as the command line tells it. They give the exit code;
/// what the command line itself makes impossible is a UsageError.
#pragma once

#include <ostream>

#include "command_line.h"

namespace velk::velkcom {

/// "register" and "unregister": loads the module and calls its registration
/// functions.
int runRegister(RegisterCommand const& command, std::ostream& out, std::ostream& errors);

/// Creates the object, follows the member path and prints the last result.
int runCall(CallCommand const& command, std::ostream& out, std::ostream& errors);

/// Prints a type library.
int runTypelib(TypelibCommand const& command, std::ostream& out, std::ostream& errors);

/// Prints the value of a constant. 1 when there is none.
int runEnum(EnumCommand const& command, std::ostream& out, std::ostream& errors);

/// Lists or changes the property sets of documents. 1 when a document cannot be
/// read or changed, or has no such property.
int runProps(PropsCommand const& command, std::ostream& out, std::ostream& errors);

}  // namespace velk::velkcom
