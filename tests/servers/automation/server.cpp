// The server as COM sees it: its classes, its registration, its exports.
#include "com/error.h"
#include "com/module.h"
#include "servers/automation/faulty.h"
#include "servers/automation/other_classes.h"
#include "servers/automation/sample.h"
#include "servers/com/exports.h"

namespace velk::test::server {
namespace {

// As server.rc numbers it.
constexpr WORD registryScript = 101;

class ServerModule final : public com::DllModule {
  public:
    using DllModule::DllModule;
    void AddCommonRGSReplacements(com::Registrar&) override {}
};

com::ObjectMapEntry objectMap[] = {
    {&sampleClass, 0, &com::makeCachedClassFactory, &com::createWithOrWithoutOuter<Sample>},
    {&faultyClass, 0, &com::makeCachedClassFactory, &com::createWithoutOuter<Faulty>},
    {&noDispatchClass, 0, &com::makeCachedClassFactory, &com::createWithoutOuter<NoDispatch>},
    {&noInstanceClass, 0, &com::makeCachedClassFactory, &makeNoInstance},
};

// One file, so that the module goes before its record.
com::ComModuleRecord record(objectMap);
ServerModule serverModule(record, testLibrary);

HRESULT registerLibrary() {
    auto path = com::modulePath(com::moduleHandle());
    com::ComPtr<ITypeLib> library;
    com::throwIfFailed(LoadTypeLib(path.c_str(), library.put()));
    return RegisterTypeLib(library.get(), path.data(), nullptr);
}

}  // namespace
}  // namespace velk::test::server

using velk::test::server::serverModule;

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID id, REFIID riid,
                                                          LPVOID* object) {
    return serverModule.getClassObject(id, riid, object);
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return serverModule.canUnloadNow();
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllRegisterServer() {
    try {
        serverModule.updateRegistry(velk::test::server::registryScript, true, false);
        return velk::test::server::registerLibrary();
    }
    VELK_COM_CATCH
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllUnregisterServer() {
    try {
        constexpr SYSKIND thisSystem = SYS_WIN64;
        HRESULT const code =
            UnRegisterTypeLib(velk::test::server::testLibrary, 1, 0, 0x0409, thisSystem);
        serverModule.updateRegistry(velk::test::server::registryScript, false, false);
        return code;
    }
    VELK_COM_CATCH
}

VELK_TEST_EXPORT long VelkTestLiveObjects() {
    return velk::test::server::LiveObject::count();
}
