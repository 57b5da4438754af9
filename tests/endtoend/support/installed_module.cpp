#include "support/installed_module.h"

namespace velk::test {
namespace {

template <typename Function>
Function* findFunction(HMODULE module, char const* name) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace

std::string builtModule() {
    return VELK_TEST_MODULE;
}

HRESULT InstalledModule::call(char const* name) const {
    auto* const function = findFunction<HRESULT STDAPICALLTYPE()>(module_.get(), name);
    return function ? function() : E_UNEXPECTED;
}

HRESULT InstalledModule::install(bool install, char const* commandLine) const {
    auto* const function =
        findFunction<HRESULT STDAPICALLTYPE(BOOL, LPCWSTR)>(module_.get(), "DllInstall");
    if (!function) return E_UNEXPECTED;
    auto const text = wide(commandLine ? commandLine : "");
    return function(install ? TRUE : FALSE, commandLine ? text.c_str() : nullptr);
}

}  // namespace velk::test
