/// A class module that enters COM on each thread that asks it for a class, and
/// leaves it when that thread ends.
#include <objbase.h>
#include <windows.h>

#include "servers/com/exports.h"

namespace {

thread_local constinit bool isToLeave = false;

BOOL WINAPI entry(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_THREAD_DETACH && isToLeave) {
        isToLeave = false;
        CoUninitialize();
    }
    return TRUE;
}

struct Attachment {
    Attachment() { VelkAttachModule(&entry); }
    ~Attachment() { VelkDetachModule(&entry); }
} const attachment;

}  // namespace

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID, REFIID, LPVOID* object) {
    *object = nullptr;
    if (!isToLeave) isToLeave = SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    return CLASS_E_CLASSNOTAVAILABLE;
}

VELK_TEST_EXPORT HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    return S_OK;
}
