/// The command line of velkcom, read.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "usage_error.h"

namespace velk::velkcom {

/// How a member is reached.
enum class Access {
    automatic,     ///< as a method or a property read, whichever it is
    method,        ///< as a method
    get,           ///< as a property that is read
    put,           ///< as a property that is written, with the last argument
    putReference,  ///< the same, for an object
};

struct HelpCommand {
    std::string topic;  ///< name of a command, or empty
};
struct VersionCommand {};
struct RegisterCommand {
    bool install = true;
    bool perUser = false;
    std::string module;  ///< path, or empty for the module beside the program
};
struct CallCommand {
    std::string progId;
    std::string member;
    std::vector<std::string> arguments;
    Access access = Access::automatic;
};
struct TypelibCommand {
    std::string file;
};
struct EnumCommand {
    std::string source;  ///< path of a type library, or the ProgID of a class
    std::string enumeration;
    std::string constant;
};

struct PropsCommand {
    enum class Action { list, get, set, remove, rename, create };
    Action action = Action::list;
    /// In the order of the command line: files and folders for `list`, FILE for
    /// `create`, and FILE, SET, KEY and what follows for the others.
    std::vector<std::string> operands;
    bool json = false;
    std::string type;  ///< of a value to write, or empty
};

using Command = std::variant<HelpCommand, VersionCommand, RegisterCommand, CallCommand,
                             TypelibCommand, EnumCommand, PropsCommand>;

/// Reads the arguments after the program's name, in UTF-8. Options may stand
/// anywhere after the command; after "--" nothing is an option.
/// Throws UsageError.
Command parseCommandLine(std::vector<std::string> const& arguments);

}  // namespace velk::velkcom
