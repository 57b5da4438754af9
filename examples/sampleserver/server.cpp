// The server as COM sees it: its class, its registration, its exports.
#include "com/error.h"
#include "com/module.h"
#include "sample.h"

#ifdef _WIN32
#define SAMPLE_EXPORT extern "C" __attribute__((dllexport))
#else
#define SAMPLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sampleserver {
namespace {

// As server.rc numbers it.
constexpr WORD registryScript = 101;

class ServerModule final : public velk::com::DllModule {
  public:
    using DllModule::DllModule;
    // The module's own path is all that the script wants replaced.
    void AddCommonRGSReplacements(velk::com::Registrar&) override {}
};

velk::com::ObjectMapEntry objectMap[] = {
    {&sampleClass, 0, &velk::com::makeCachedClassFactory,
     &velk::com::createWithOrWithoutOuter<Sample>},
};

// One file, so that the module goes before its record.
velk::com::ComModuleRecord record(objectMap);
ServerModule serverModule(record, sampleLibrary);

HRESULT registerLibrary() {
    auto path = velk::com::modulePath(velk::com::moduleHandle());
    velk::com::ComPtr<ITypeLib> library;
    velk::com::throwIfFailed(LoadTypeLib(path.c_str(), library.put()));
    return RegisterTypeLib(library.get(), path.data(), nullptr);
}

}  // namespace
}  // namespace sampleserver

using namespace sampleserver;

SAMPLE_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object) {
    return serverModule.getClassObject(id, riid, object);
}

SAMPLE_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return serverModule.canUnloadNow();
}

SAMPLE_EXPORT HRESULT STDAPICALLTYPE DllRegisterServer() {
    try {
        serverModule.updateRegistry(registryScript, true, false);
        return registerLibrary();
    }
    VELK_COM_CATCH
}

SAMPLE_EXPORT HRESULT STDAPICALLTYPE DllUnregisterServer() {
    try {
        HRESULT const code = UnRegisterTypeLib(sampleLibrary, 1, 0, libraryLocale, SYS_WIN64);
        serverModule.updateRegistry(registryScript, false, false);
        return code;
    }
    VELK_COM_CATCH
}
