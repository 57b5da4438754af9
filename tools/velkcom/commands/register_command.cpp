#include <optional>

#include "com/module.h"
#include "com/owners.h"
#include "com/utf.h"
#include "commands/commands.h"
#include "commands/object_creation.h"
#include "system.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

using Text = std::basic_string<OLECHAR>;
using RegisterFunction = HRESULT(STDAPICALLTYPE*)();
using InstallFunction = HRESULT(STDAPICALLTYPE*)(BOOL install, LPCWSTR commandLine);

std::filesystem::path modulePath(RegisterCommand const& command) {
    if (!command.module.empty()) {
        // Without a folder the name would be looked for along search paths.
        return absolutePath(pathFromUtf8(command.module));
    }
    auto const program = pathFromUtf8(com::toUtf8(com::modulePath(nullptr)));
    return program.parent_path() / adapterFileName();
}

Text systemText(std::string const& path) {
    auto text = com::fromUtf8(path);
    if (!text) throw UsageError("the path of the module is not valid UTF-8");
    return *std::move(text);
}

// What the module needs is looked for in its own folder, and not in this
// program's, the current one or along a path.
com::Module loadModule(std::string const& path) {
    com::Module module(
        LoadLibraryExW(systemText(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
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

char const* hiveName(bool perUser) {
    return perUser ? "current user" : "machine";
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

bool hasKey(HKEY hive, OLECHAR const* parent, GUID const& id) {
    constexpr int guidCapacity = 39;
    OLECHAR name[guidCapacity];
    StringFromGUID2(id, name, guidCapacity);
    auto const key = OLESTR("Software\\Classes\\") + Text(parent) + OLESTR("\\") + name;
    com::RegistryKey open;
    return RegOpenKeyExW(hive, key.c_str(), 0, KEY_READ, open.put()) == ERROR_SUCCESS;
}

bool isRegisteredClass(ITypeLib* library, UINT index, HKEY hive) {
    com::ComPtr<ITypeInfo> type;
    if (FAILED(library->GetTypeInfo(index, type.put()))) return false;
    com::TypeAttributes attributes(type.get());
    return SUCCEEDED(type->GetTypeAttr(attributes.put())) &&
           attributes->typekind == TKIND_COCLASS && hasKey(hive, OLESTR("CLSID"), attributes->guid);
}

/// Whether a class of the module's type library, or the library itself, stands
/// in the classes of a hive: HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER. Nothing
/// when the module has no library to tell its classes by.
std::optional<bool> isRegistered(Text const& module, HKEY hive) {
    com::ComPtr<ITypeLib> library;
    if (FAILED(LoadTypeLibEx(module.c_str(), REGKIND_NONE, library.put()))) return std::nullopt;
    com::LibraryAttributes attributes(library.get());
    if (FAILED(library->GetLibAttr(attributes.put()))) return std::nullopt;
    if (hasKey(hive, OLESTR("TypeLib"), attributes->guid)) return true;
    UINT const count = library->GetTypeInfoCount();
    for (UINT index = 0; index < count; ++index) {
        if (isRegisteredClass(library.get(), index, hive)) return true;
    }
    return false;
}

/// Where a module is registered; nothing where that cannot be told.
struct State {
    std::optional<bool> hive;
    std::optional<bool> otherHive;
};

State stateOf(RegisterCommand const& command, std::string const& path) {
    auto const text = systemText(path);
    auto const inHive = [&](bool perUser) {
        return isRegistered(text, perUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE);
    };
    return {inHive(command.perUser), inHive(!command.perUser)};
}

void reportMissing(RegisterCommand const& command, std::string const& path, State const& state,
                   std::ostream& errors) {
    errors << "velkcom: \"" << path << "\" was not registered for the " << hiveName(command.perUser)
           << "\n";
    if (!state.otherHive.value_or(false)) return;
    errors << "It is registered for the " << hiveName(!command.perUser) << ": velkcom unregister "
           << (command.perUser ? "without --user" : "--user") << " takes that back.\n";
}

}  // namespace

int runRegister(RegisterCommand const& command, std::ostream& out, std::ostream& errors) {
    std::string const path = pathToUtf8(modulePath(command));
    ComSession const session;
    com::Module const module = loadModule(path);
    State const before = command.install ? State{} : stateOf(command, path);
    HRESULT const code = carryOut(command, module, path);
    if (!before.hive.value_or(true)) {
        reportMissing(command, path, before, errors);
        return 1;
    }
    if (FAILED(code)) {
        report(command, path, code, errors);
        return 1;
    }
    out << (command.install ? "registered \"" : "unregistered \"") << path << "\" for the "
        << hiveName(command.perUser) << "\n";
    if (command.install && command.perUser && usersClassesAreIgnored()) {
        errors << "Programs with an administrator's rights, such as this one, do not see what is "
                  "registered for a user.\n";
    }
    return 0;
}

}  // namespace velk::velkcom
