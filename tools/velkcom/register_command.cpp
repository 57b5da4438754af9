#include "register_command.h"

#include "com/module.h"
#include "com/owners.h"
#include "com/utf.h"
#include "com_session.h"
#include "result_codes.h"
#include "system.h"

namespace velk::velkcom {
namespace {

using RegisterFunction = HRESULT(STDAPICALLTYPE*)();
using InstallFunction = HRESULT(STDAPICALLTYPE*)(BOOL install, LPCWSTR commandLine);

std::filesystem::path modulePath(RegisterCommand const& command) {
    if (!command.module.empty()) {
        // Without a folder the name would be looked for along search paths.
        return std::filesystem::absolute(pathFromUtf8(command.module)).lexically_normal();
    }
    auto const program = pathFromUtf8(com::toUtf8(com::modulePath(nullptr)));
    return program.parent_path() / adapterFileName();
}

com::Module loadModule(std::string const& path) {
    auto const text = com::fromUtf8(path);
    if (!text) throw UsageError("the path of the module is not valid UTF-8");
    com::Module module(LoadLibraryW(text->c_str()));
    if (module.get() == nullptr) {
        HRESULT const code = HRESULT_FROM_WIN32(GetLastError());
        throw com::Error(FAILED(code) ? code : E_FAIL,
                         "cannot load \"" + path + "\": " + describeCode(code));
    }
    return module;
}

template <typename Function>
Function findFunction(com::Module const& module, char const* name, std::string const& path) {
    // By way of an untyped pointer: the type is known to the caller alone.
    auto const function =
        reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module.get(), name)));
    if (function == nullptr) {
        throw com::Error(HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND),
                         "\"" + path + "\" has no function " + name);
    }
    return function;
}

HRESULT carryOut(RegisterCommand const& command, com::Module const& module,
                 std::string const& path) {
    if (command.perUser) {
        auto const install = findFunction<InstallFunction>(module, "DllInstall", path);
        return install(command.install ? TRUE : FALSE, OLESTR("user"));
    }
    char const* const name = command.install ? "DllRegisterServer" : "DllUnregisterServer";
    return findFunction<RegisterFunction>(module, name, path)();
}

// The codes by which writing for the machine is refused to ordinary users.
bool wasRefused(HRESULT code) {
    return code == E_ACCESSDENIED || code == TYPE_E_REGISTRYACCESS ||
           code == HRESULT_FROM_WIN32(ERROR_WRITE_PROTECT) ||
           code == HRESULT_FROM_WIN32(ERROR_CANTOPEN) ||
           code == HRESULT_FROM_WIN32(ERROR_CANTWRITE);
}

void report(RegisterCommand const& command, std::string const& path, HRESULT code,
            std::ostream& errors) {
    errors << "velkcom: cannot " << (command.install ? "register" : "unregister") << " \"" << path
           << "\": " << describeCode(code);
    std::string const meaning = meaningOfCode(code);
    errors << (meaning.empty() ? "" : ", " + meaning) << "\n";
    if (wasRefused(code) && !command.perUser) {
        errors << "The registry of the machine may not be written by this user; --user "
               << (command.install ? "registers" : "unregisters")
               << " for the current user only.\n";
    }
}

}  // namespace

int runRegister(RegisterCommand const& command, std::ostream& out, std::ostream& errors) {
    std::string const path = pathToUtf8(modulePath(command));
    ComSession const session;
    com::Module const module = loadModule(path);
    HRESULT const code = carryOut(command, module, path);
    if (FAILED(code)) {
        report(command, path, code, errors);
        return 1;
    }
    out << (command.install ? "registered \"" : "unregistered \"") << path << "\" for the "
        << (command.perUser ? "current user" : "machine") << "\n";
    return 0;
}

}  // namespace velk::velkcom
