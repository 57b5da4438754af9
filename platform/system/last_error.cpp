/// The calling thread's last error number.
#include <winbase.h>

#include "platform/system/thread_end.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    velk::platform::watchThreadEnd();
    lastError = error;
}
