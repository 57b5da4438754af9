/// A module that is told of ending threads.
#include <atomic>

#include <windows.h>

#include "servers/com/exports.h"

namespace {

std::atomic<int> detaches{0};
std::atomic<void (*)()> whenDetaching{nullptr};

BOOL WINAPI entry(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_THREAD_DETACH) {
        ++detaches;
        if (auto* const action = whenDetaching.load()) action();
    }
    return TRUE;
}

}  // namespace

VELK_TEST_EXPORT void watchThreads() {
    VelkAttachModule(&entry);
}
VELK_TEST_EXPORT void unwatchThreads() {
    VelkDetachModule(&entry);
}
VELK_TEST_EXPORT int countDetaches() {
    return detaches;
}
VELK_TEST_EXPORT void setDetachAction(void (*action)()) {
    whenDetaching = action;
}
