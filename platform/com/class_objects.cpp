/// Getting class objects and making instances.
#include <objbase.h>

#include "platform/com/apartments.h"
#include "platform/com/class_modules.h"
#include "platform/com/global_interface_table.h"
#include "platform/com/held_object.h"
#include "platform/com/prog_ids.h"
#include "platform/system/thread_end.h"

namespace velk::platform::com {
namespace {

// What an unload delay of "as the system thinks fit" means.
constexpr std::chrono::minutes usualUnloadDelay{10};
constexpr DWORD systemsChoice = 0xFFFFFFFF;

HRESULT classObject(REFCLSID id, DWORD context, REFIID riid, void** object) {
    if (!isInApartment()) return CO_E_NOTINITIALIZED;
    if ((context & CLSCTX_ALL) == 0) return E_INVALIDARG;
    // Classes live in modules of this process and nowhere else.
    if ((context & CLSCTX_INPROC_SERVER) == 0) return REGDB_E_CLASSNOTREG;
    if (id == CLSID_StdGlobalInterfaceTable) return globalInterfaceTableClass(riid, object);
    auto const where = moduleOfClass(id);
    if (!where) return REGDB_E_CLASSNOTREG;
    ClassModuleUse module;
    HRESULT const result = useClassModule(*where, module);
    return FAILED(result) ? result : module.classObject(id, riid, object);
}

}  // namespace
}  // namespace velk::platform::com

using namespace velk::platform::com;

HRESULT CoGetClassObject(REFCLSID id, DWORD context, LPVOID, REFIID riid, LPVOID* object) {
    if (object == nullptr) return E_INVALIDARG;
    *object = nullptr;
    try {
        velk::platform::watchThreadEnd();
        return classObject(id, context, riid, object);
    } catch (RegistryUnreadable const&) {
        return REGDB_E_READREGDB;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID riid, LPVOID* object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    HeldObject<IClassFactory> factory;
    HRESULT result = CoGetClassObject(id, context, nullptr, IID_IClassFactory, factory.target());
    if (FAILED(result)) return result;
    // The outer object needs the inner one's own IUnknown, or it could never
    // tell it from itself.
    if (outer != nullptr && riid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
    result = factory->CreateInstance(outer, riid, object);
    if (FAILED(result)) *object = nullptr;
    return result;
}

void CoFreeUnusedLibraries() {
    CoFreeUnusedLibrariesEx(systemsChoice, 0);
}

void CoFreeUnusedLibrariesEx(DWORD delay, DWORD reserved) {
    if (reserved != 0) return;
    std::chrono::milliseconds const wanted(delay);
    try {
        freeUnusedClassModules(delay == systemsChoice ? usualUnloadDelay : wanted);
    } catch (...) {
        // Without memory nothing is freed this time.
    }
}
