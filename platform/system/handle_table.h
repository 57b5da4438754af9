/// Handles and what they stand for.
#pragma once

#include <memory>
#include <mutex>
#include <shared_mutex>
#include <unordered_map>

namespace velk::platform {

/// Handles are numbers that are never used twice, so that one which was
/// closed is noticed for ever. Thread-safe.
template <typename Object>
class HandleTable {
  public:
    void* add(std::shared_ptr<Object> object) {
        std::unique_lock const guard(lock_);
        auto const handle = next_;
        next_ += 4;
        objects_.emplace(handle, std::move(object));
        return reinterpret_cast<void*>(handle);
    }

    std::shared_ptr<Object> find(void const* handle) {
        std::shared_lock const guard(lock_);
        auto const found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == objects_.end() ? nullptr : found->second;
    }

    /// What the handle stood for, or null when it is none.
    std::shared_ptr<Object> remove(void const* handle) {
        std::unique_lock const guard(lock_);
        auto taken = objects_.extract(reinterpret_cast<std::uintptr_t>(handle));
        return taken.empty() ? nullptr : std::move(taken.mapped());
    }

  private:
    std::shared_mutex lock_;
    std::unordered_map<std::uintptr_t, std::shared_ptr<Object>> objects_;
    // Clear of the predefined handles, which have 32 bits.
    std::uintptr_t next_ = std::uintptr_t{1} << 33;
};

}  // namespace velk::platform
