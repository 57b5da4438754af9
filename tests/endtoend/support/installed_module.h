/// The module's registration functions, as an installer calls them.
#pragma once

#include <string>

#include "com/owners.h"
#include "support/registry_dump.h"

namespace velk::test {

/// The module's file in the build, in UTF-8.
std::string builtModule();

/// A module loaded from a path; what it registers is the test's to remove.
class InstalledModule {
  public:
    explicit InstalledModule(std::string const& path = builtModule())
        : module_(LoadLibraryW(wide(path).c_str())) {}

    bool loaded() const { return module_.get() != nullptr; }
    HRESULT registerServer() const { return call("DllRegisterServer"); }
    HRESULT unregisterServer() const { return call("DllUnregisterServer"); }
    /// A null command line is given as null.
    HRESULT install(bool install, char const* commandLine) const;

  private:
    HRESULT call(char const* name) const;

    com::Module module_;
};

}  // namespace velk::test
