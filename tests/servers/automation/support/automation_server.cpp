#include "servers/automation/support/automation_server.h"

#include "servers/automation/value_description.h"

namespace velk::test {
namespace {

template <typename Function>
Function findFunction(HMODULE module, char const* name) noexcept {
    return reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module, name)));
}

}  // namespace

AutomationServer::AutomationServer() : module_(LoadLibraryW(path().c_str())) {
    registration_ = call("DllRegisterServer");
}

AutomationServer::~AutomationServer() {
    if (SUCCEEDED(registration_)) call("DllUnregisterServer");
    module_.reset();
    // COM's own references to the module, which keep its type library loaded.
    CoFreeUnusedLibraries();
}

std::basic_string<OLECHAR> AutomationServer::path() {
    return server::textOf(VELK_AUTOMATION_SERVER);
}

long AutomationServer::liveObjects() const noexcept {
    auto* const count =
        module_.get() ? findFunction<server::LiveObjects>(module_.get(), "VelkTestLiveObjects")
                      : nullptr;
    return count ? count() : -1;
}

HRESULT AutomationServer::call(char const* function) const noexcept {
    if (!module_.get()) return HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND);
    auto* const found = findFunction<HRESULT(STDAPICALLTYPE*)()>(module_.get(), function);
    return found ? found() : HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
}

HRESULT createByProgId(char const* progId, REFIID id, void** object) noexcept {
    CLSID classId{};
    HRESULT const code = CLSIDFromProgID(server::textOf(progId).c_str(), &classId);
    if (FAILED(code)) return code;
    return CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, id, object);
}

}  // namespace velk::test
