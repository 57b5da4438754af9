#include "module/dll_main.h"

#include "application/application_thread.h"
#include "host/coinit.h"

namespace {

void onDetach(DWORD reason, bool processEnds) {
    if (reason == DLL_THREAD_DETACH) PCoInitializer::detach();
    if (reason == DLL_PROCESS_DETACH && !processEnds) velk::adapter::endApplicationThread();
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID reserved) {
    try {
        onDetach(reason, reserved != nullptr);
    } catch (...) {
        // The loader has no use for an error while it takes the module down.
    }
    return TRUE;
}
