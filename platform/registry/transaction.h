/// Changes of the hives that are made together.
#pragma once

#include <array>
#include <memory>

#include <winbase.h>

#include "platform/registry/hive.h"

namespace velk::platform::registry {

/// Belongs to the thread that makes it.
class Transaction {
  public:
    /// The one that the calling thread works in, or null.
    static Transaction* ofThread();

    /// The change of a hive, begun now if it is to be written to; null when the
    /// hive is only read and was not changed yet.
    HiveChange* change(HiveName name, bool toWrite);

    bool isOfThisThread() const { return thread_ == GetCurrentThreadId(); }
    bool hasEnded() const { return hasEnded_; }
    /// Fails with ERROR_TRANSACTION_NOT_ACTIVE when it has ended before.
    void end(bool commits);

  private:
    std::array<std::unique_ptr<HiveChange>, 2> changes_;
    DWORD const thread_ = GetCurrentThreadId();
    bool hasEnded_ = false;
};

}  // namespace velk::platform::registry
