// The module's process-wide objects in one file, because the order in which
// they come into being, and the reverse in which they go, is part of what the
// module promises: the language guarantees it within one file only. Loading
// starts no thread and calls no COM function.

#include "module/process_objects.h"

#include <qglobal.h>
#include "VelkCOMFileProperties/file_properties.h"
#include "VelkCOMFileProperties/property_dictionary.h"
#include "VelkQXTProxy/com_adapter.h"
#include "VelkQXTProxy/exception_info.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "VelkQXTProxy/wrapper_interfaces.h"
#include "application/VelkCOMProxy.h"
#include "application/application_thread.h"
#include "com/class_factory.h"
#include "host/cleanup.h"
#include "host/symbol_ref.h"
#include "module/exports.h"
#include "module/host_class_module.h"
#include "module/interfaces.h"
#include "module/module_attachment.h"
#include "module/qt_version.h"
#include "module/resources/resource.h"

namespace velk::adapter {
namespace {

com::ObjectMapEntry objectMap[] = {
    {&CLSID_VelkCOMProxy, IDR_VELKCOMPROXY, &com::makeCachedClassFactory,
     &com::createWithOrWithoutOuter<CVelkCOMProxy>},
};

/// Runs what the module registered with the runtime's global clean-up, before
/// anything else of the module goes.
class GlobalCleanupHook {
  public:
    GlobalCleanupHook() = default;
    GlobalCleanupHook(GlobalCleanupHook const&) = delete;
    GlobalCleanupHook& operator=(GlobalCleanupHook const&) = delete;
    ~GlobalCleanupHook() { mzRunGlobalCleanupFor(reinterpret_cast<void*>(&addressInModule)); }

  private:
    // The runtime tells modules apart by an address inside them.
    static void addressInModule() {}
};

/// Makes the interface ids that the wrappers ask for before everything that may
/// ask, so that they go after it.
struct WrapperIds {
    WrapperIds() {
        mzScriptSymbolRefI::interfaceId();
        mzIComDispatchWrapper::interfaceId();
        mzIComVariantWrapper::interfaceId();
    }
};

WrapperIds const wrapperIds;
com::ComModuleRecord comModuleRecord(objectMap);

}  // namespace

CVelkCOMAdapterModule comModule(comModuleRecord);
mzThreadC applicationThread;
ApplicationRun applicationRun;
// Copies, because Qt keeps them beyond the module's end.
QString applicationName{"anonymous"};
QString applicationVersion{"1.0"};

namespace {

proxyAutoRegisterT<prx_EXCEPINFO> exceptionInfoClass;
proxyAutoRegisterT<qxtProxyC> comAdapterClass;

}  // namespace

LastExceptionSlot lastExceptionSlot;

namespace {

proxyAutoRegisterT<vbsComVariantWrapperC> variantWrapperClass;
VelkCOMAdapter hostClassModule;
proxyAutoRegisterT<prxFilePropDictionaryObjC> propertyDictionaryClass;
proxyAutoRegisterT<prxFilePropertiesC> filePropertiesClass;
GlobalCleanupHook globalCleanupHook;
// Last, so that the entry point hears of the end before anything goes.
ModuleAttachment moduleAttachment;

}  // namespace
}  // namespace velk::adapter

// What COM asks of every class module.

STDAPI DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object) {
    if (object != nullptr && !velk::adapter::canUseQt(qVersion())) {
        *object = nullptr;
        return HRESULT_FROM_WIN32(ERROR_REVISION_MISMATCH);
    }
    return velk::adapter::comModule.getClassObject(id, riid, object);
}

STDAPI DllCanUnloadNow() {
    // The answer would let its caller, this very thread, free the code that the
    // thread goes back to.
    if (velk::adapter::onApplicationThread()) return S_FALSE;
    return velk::adapter::comModule.canUnloadNow();
}
