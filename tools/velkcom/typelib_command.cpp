#include "typelib_command.h"

#include "com_session.h"
#include "library_path.h"
#include "typelib_printer.h"

namespace velk::velkcom {

int runTypelib(TypelibCommand const& command, std::ostream& out, std::ostream& errors) {
    ComSession const session;
    return tools::printTypeLibrary(libraryPath(command.file), out, errors);
}

}  // namespace velk::velkcom
