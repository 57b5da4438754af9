// What COM asks of every class module.

#include "exports.h"
#include "process_objects.h"

STDAPI DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object) {
    return velk::adapter::comModule.getClassObject(id, riid, object);
}

STDAPI DllCanUnloadNow() {
    return velk::adapter::comModule.canUnloadNow();
}
