/// Getting class objects and making instances.
#include <objbase.h>

#include "platform/com/apartments.h"
#include "platform/com/class_modules.h"
#include "platform/com/global_interface_table.h"
#include "platform/com/held_object.h"
#include "platform/system/thread_end.h"

namespace velk::platform::com {
namespace {

constexpr std::chrono::minutes unloadDelay{10};

HRESULT classObject(REFCLSID id, DWORD context, REFIID riid, void** object) {
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    if ((context & CLSCTX_ALL) == 0) return E_INVALIDARG;
    // Classes live in modules of this process and nowhere else.
    if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
    if (id == CLSID_StdGlobalInterfaceTable) return globalInterfaceTableClass(riid, object);
    auto const where = moduleOfClass(id);
    if (!where) return REGDB_E_CLASSNOTREG;
    ClassModuleUse module;
    check(useClassModule(*where, module));
    return module.classObject(id, riid, object);
}

}  // namespace
}  // namespace velk::platform::com

using namespace velk::platform;
using namespace velk::platform::com;

HRESULT CoGetClassObject(REFCLSID id, DWORD context, LPVOID, REFIID riid, LPVOID* object) {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    return guarded([&] {
        watchThreadEnd();
        return classObject(id, context, riid, object);
    });
}

HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID riid, LPVOID* object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    HeldObject<IClassFactory> factory;
    HRESULT const result =
        CoGetClassObject(id, context, nullptr, IID_IClassFactory, factory.target());
    if (FAILED(result)) return result;
    // The outer object needs the inner one's own IUnknown, or it could never
    // tell it from itself.
    if (outer != nullptr && riid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
    return askForObject(object, [&] { return factory->CreateInstance(outer, riid, object); });
}

void CoFreeUnusedLibraries() {
    freeUnusedClassModules(unloadDelay);
}
