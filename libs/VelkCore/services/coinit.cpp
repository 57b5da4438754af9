#include "host/coinit.h"

#include <windows.h>

#include <objbase.h>

namespace {

// Whether this thread owes COM a CoUninitialize.
thread_local constinit bool entered = false;

}  // namespace

void PCoInitializer::attach(unsigned long coinitFlags) {
    if (entered) return;
    // S_FALSE (the thread was in COM already) counts as an entry too; only a
    // refusal, RPC_E_CHANGED_MODE above all, is not to be balanced.
    entered = SUCCEEDED(CoInitializeEx(nullptr, static_cast<DWORD>(coinitFlags)));
}

void PCoInitializer::detach() {
    if (!entered) return;
    entered = false;
    CoUninitialize();
}
