/// The module's registration functions, as an installer calls them.
#pragma once

#include <string>

#include "com/owners.h"
#include "com/utf.h"

namespace velk::test {

/// The module's file in the build, in UTF-8.
inline std::string builtModule() {
    return VELK_TEST_MODULE;
}

/// A module loaded from a path; what it registers is the test's to remove.
class InstalledModule {
  public:
    explicit InstalledModule(std::string const& path = builtModule())
        : module_(LoadLibraryW(com::fromUtf8(path).value().c_str())) {}

    bool loaded() const { return module_.get() != nullptr; }
    HRESULT registerServer() const { return call<HRESULT()>("DllRegisterServer"); }
    HRESULT unregisterServer() const { return call<HRESULT()>("DllUnregisterServer"); }
    /// A null command line is given as null.
    HRESULT install(bool install, char const* commandLine) const {
        auto const text = com::fromUtf8(commandLine ? commandLine : "").value();
        return call<HRESULT(BOOL, LPCWSTR)>("DllInstall", install ? TRUE : FALSE,
                                            commandLine ? text.c_str() : nullptr);
    }

  private:
    // On the systems of 64 bits there is one convention of calls.
    template <typename Function, typename... Arguments>
    HRESULT call(char const* name, Arguments... arguments) const {
        auto* const function = reinterpret_cast<Function*>(
            reinterpret_cast<void (*)()>(GetProcAddress(module_.get(), name)));
        return function ? function(arguments...) : E_UNEXPECTED;
    }

    com::Module module_;
};

}  // namespace velk::test
