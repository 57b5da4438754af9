/// What reached an object's Invoke.
#pragma once

#include <mutex>
#include <vector>

#include "servers/automation/value_description.h"

namespace velk::test::server {

/// The calls of one object in their order, as describeCall writes them.
/// Thread-safe.
class CallRecord {
  public:
    /// Throws std::bad_alloc.
    void add(WORD flags, DISPPARAMS const* parameters);
    void clear() noexcept;
    /// A vector of texts, which is the caller's. E_OUTOFMEMORY.
    HRESULT give(SAFEARRAY** calls) const noexcept;

  private:
    mutable std::mutex mutex_;
    std::vector<Text> calls_;
};

}  // namespace velk::test::server
