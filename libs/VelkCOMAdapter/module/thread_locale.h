/// The calling thread's locale for the length of a scope.
#pragma once

#include <windows.h>

namespace velk::adapter {

/// Sets the system's default locale, and the former one again at the end.
class SystemLocaleScope {
  public:
    SystemLocaleScope() noexcept : former_(GetThreadLocale()) {
        SetThreadLocale(LOCALE_SYSTEM_DEFAULT);
    }
    ~SystemLocaleScope() { SetThreadLocale(former_); }
    SystemLocaleScope(SystemLocaleScope const&) = delete;
    SystemLocaleScope& operator=(SystemLocaleScope const&) = delete;

  private:
    LCID former_;
};

}  // namespace velk::adapter
