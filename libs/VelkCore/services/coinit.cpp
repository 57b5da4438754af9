#include "host/coinit.h"

#include <windows.h>

#include <objbase.h>

#include "services/thread_end.h"

// The thread's mark says whether it owes COM a CoUninitialize.

void PCoInitializer::attach(unsigned long coinitFlags) {
    if (velk::core::threadMark()) return;
    // S_FALSE (the thread was in COM already) counts as an entry too; only a
    // refusal, RPC_E_CHANGED_MODE above all, is not to be balanced.
    velk::core::setThreadMark(SUCCEEDED(CoInitializeEx(nullptr, static_cast<DWORD>(coinitFlags))));
}

void PCoInitializer::detach() {
    if (!velk::core::threadMark()) return;
    velk::core::setThreadMark(false);
    CoUninitialize();
}
