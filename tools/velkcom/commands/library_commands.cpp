#include <algorithm>

#include "com/enum_constants.h"
#include "com/error.h"
#include "com/utf.h"
#include "commands/commands.h"
#include "commands/object_creation.h"
#include "system.h"
#include "typelib/typelib_printer.h"

namespace velk::velkcom {
namespace {

using com::ComPtr;

/// The path of a type library as LoadTypeLib takes it. `text` is the path of a
/// file, in UTF-8; after a module's path may stand a slash or a backslash and
/// the number of one of its libraries.
std::filesystem::path libraryPath(std::string const& text) {
    auto path = pathFromUtf8(text);
    auto const number = path.filename().native();
    bool const isNumber =
        std::ranges::all_of(number, [](auto unit) { return unit >= '0' && unit <= '9'; });
    auto module = path.parent_path();
    std::error_code error;
    if (number.empty() || !isNumber || !std::filesystem::is_regular_file(module, error)) {
        return path;
    }
    // LoadTypeLib knows the backslash only, on every system.
    module += '\\';
    module += number;
    return module;
}

bool namesFile(std::string const& source) {
    std::error_code error;
    return source.find_first_of("/\\") != std::string::npos ||
           std::filesystem::exists(pathFromUtf8(source), error);
}

ComPtr<ITypeLib> libraryInFile(std::string const& path) {
    auto const name = com::fromUtf8(pathToUtf8(libraryPath(path)));
    if (!name) throw UsageError("the FILE is not valid UTF-8");
    ComPtr<ITypeLib> library;
    com::throwIfFailed(LoadTypeLibEx(name->c_str(), REGKIND_NONE, library.put()),
                       ("cannot read a type library from \"" + path + "\"").c_str());
    return library;
}

ComPtr<ITypeLib> libraryOfClass(std::string const& progId) {
    ComPtr<IDispatch> const object = createObject(progId);
    std::string const failure = "\"" + progId + "\" does not tell its type library";
    ComPtr<ITypeInfo> type;
    com::throwIfFailed(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put()), failure.c_str());
    ComPtr<ITypeLib> library;
    UINT index = 0;
    com::throwIfFailed(type ? type->GetContainingTypeLib(library.put(), &index) : E_POINTER,
                       failure.c_str());
    return library;
}

std::basic_string<OLECHAR> wideName(std::string const& name) {
    auto const wide = com::fromUtf8(name);
    if (!wide) throw UsageError("a name is not valid UTF-8");
    return *wide;
}

}  // namespace

int runTypelib(TypelibCommand const& command, std::ostream& out, std::ostream& errors) {
    ComSession const session;
    return printTypeLibrary(libraryPath(command.file), out, errors);
}

int runEnum(EnumCommand const& command, std::ostream& out, std::ostream& errors) {
    auto const enumeration = wideName(command.enumeration);
    auto const constant = wideName(command.constant);
    ComSession const session;
    try {
        auto const library = namesFile(command.source) ? libraryInFile(command.source)
                                                       : libraryOfClass(command.source);
        if (auto const value = com::findEnumConstant(library, enumeration, constant)) {
            out << *value << "\n";
            return 0;
        }
        errors << "velkcom: no enumeration \"" << command.enumeration << "\" with a constant \""
               << command.constant << "\" in the type library of \"" << command.source << "\"\n";
    } catch (CallFailure const& failure) {
        errors << "velkcom: " << failure.what() << "\n";
    }
    return 1;
}

}  // namespace velk::velkcom
