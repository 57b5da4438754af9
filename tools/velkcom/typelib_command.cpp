#include "typelib_command.h"

#include "com_session.h"
#include "system.h"
#include "typelib_printer.h"

namespace velk::velkcom {

int runTypelib(TypelibCommand const& command, std::ostream& out, std::ostream& errors) {
    ComSession const session;
    return tools::printTypeLibrary(pathFromUtf8(command.file), out, errors);
}

}  // namespace velk::velkcom
