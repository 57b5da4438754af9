/// The calling thread's number, locale and last error.
#include <pthread.h>
#include <unistd.h>
#include <winbase.h>

#include "platform/system/thread_end.h"

namespace {

constexpr LCID englishUnitedStates = 0x0409;

thread_local LCID threadLocale = englishUnitedStates;
thread_local DWORD threadId = 0;
thread_local DWORD lastError = ERROR_SUCCESS;

// A forked child goes on in a thread with a number of its own.
int const forgetsIdInChild = pthread_atfork(nullptr, nullptr, [] { threadId = 0; });

/// The locale that a given one stands for, or 0 when there is no such locale.
LCID resolveLocale(LCID locale) {
    constexpr WORD userDefaultSub = 1, systemDefaultSub = 2, customSubs = 3;
    if (locale > 0xFFFF) {
        // Beyond the language there is only the order of sorting.
        return locale <= 0xFFFFF && PRIMARYLANGID(locale) != LANG_NEUTRAL ? locale : 0;
    }
    auto const primary = static_cast<WORD>(PRIMARYLANGID(locale));
    WORD const sub = SUBLANGID(static_cast<WORD>(locale));
    if (primary == LANG_NEUTRAL) {
        if (sub > customSubs + 1) return 0;
        static_assert(MAKELANGID(LANG_NEUTRAL, userDefaultSub) == LOCALE_USER_DEFAULT &&
                      MAKELANGID(LANG_NEUTRAL, systemDefaultSub) == LOCALE_SYSTEM_DEFAULT);
        return englishUnitedStates;
    }
    // The highest published primary language number.
    constexpr WORD lastLanguage = 0x92;
    if (primary > lastLanguage) return 0;
    if (locale == LOCALE_INVARIANT) return locale;
    // A language without a country stands for its first country.
    return sub == SUBLANG_NEUTRAL ? static_cast<LCID>(MAKELANGID(primary, SUBLANG_DEFAULT))
                                  : locale;
}

}  // namespace

DWORD GetCurrentThreadId() {
    velk::platform::watchThreadEnd();
    if (threadId == 0) threadId = static_cast<DWORD>(gettid());
    return threadId;
}

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD error) {
    velk::platform::watchThreadEnd();
    lastError = error;
}

LCID GetThreadLocale() {
    return threadLocale;
}

BOOL SetThreadLocale(LCID lcid) {
    LCID const resolved = resolveLocale(lcid);
    if (resolved == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    threadLocale = resolved;
    return TRUE;
}

LCID GetUserDefaultLCID() {
    return englishUnitedStates;
}

LCID GetSystemDefaultLCID() {
    return englishUnitedStates;
}
