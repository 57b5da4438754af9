/// The module's count of things that keep it loaded.
#pragma once

#include <windows.h>

namespace velk::com {

/// What keeps a module loaded: objects and factory locks count in it.
class ModuleLockCount {
  public:
    virtual ~ModuleLockCount() = default;
    /// Adds one and gives the new count. Thread-safe.
    virtual LONG Lock() noexcept = 0;
    /// Takes one away and gives the new count. Thread-safe.
    virtual LONG Unlock() noexcept = 0;
    /// The count now.
    virtual LONG GetLockCount() noexcept = 0;
};

/// Locks the module that this code is part of, if it has a module object.
void lockModule() noexcept;
/// Takes a lock back.
void unlockModule() noexcept;

/// Held by an object for as long as it lives: the module stays loaded.
class ModuleLock {
  public:
    ModuleLock() noexcept { lockModule(); }
    ~ModuleLock() { unlockModule(); }
    ModuleLock(ModuleLock const&) = delete;
    ModuleLock& operator=(ModuleLock const&) = delete;
};

}  // namespace velk::com
