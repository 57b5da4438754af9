// What COM asks of every class module.

#include <qglobal.h>

#include "application_thread.h"
#include "exports.h"
#include "process_objects.h"
#include "qt_version.h"

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
