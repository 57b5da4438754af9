/// Several changes of the system's registry as one.
#pragma once

#include <windows.h>

namespace velk::com {

/// What the calling thread writes to a hive while this lives, if the system can
/// hold that back: it is made in one piece by commit, and dropped without. No
/// other process changes the hive meanwhile. Inside another change it is a part
/// of that one. Where a system writes at once, this does nothing.
class RegistryChange {
  public:
    /// Of the machine's hive or the user's. Throws Error when others keep the
    /// hive busy, or there is no memory for a change.
    explicit RegistryChange(bool perUser);
    RegistryChange(RegistryChange const&) = delete;
    RegistryChange& operator=(RegistryChange const&) = delete;
    ~RegistryChange();

    /// Makes the change. Throws Error, and then the registry is as it was.
    void commit();

    /// Whether the system drops what is not committed; otherwise that is the
    /// caller's to take back.
    static bool isWhole() noexcept;

  private:
    /// Null within another change.
    HANDLE transaction_ = nullptr;
};

}  // namespace velk::com
