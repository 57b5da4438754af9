#pragma once

#include <mutex>

/// Mutual exclusion; the thread inside may enter again.
class mzCriticalSectionObjectC {
  public:
    void enter() const { mutex_.lock(); }
    void leave() const { mutex_.unlock(); }

  private:
    mutable std::recursive_mutex mutex_;
};

/// Is inside a critical section for a scope.
class mzCriticalAutoSectionRefC {
  public:
    /// Null enters nothing.
    explicit mzCriticalAutoSectionRefC(mzCriticalSectionObjectC const* section)
        : section_(section) {
        if (section_) section_->enter();
    }
    ~mzCriticalAutoSectionRefC() {
        if (section_) section_->leave();
    }
    mzCriticalAutoSectionRefC(mzCriticalAutoSectionRefC const&) = delete;
    mzCriticalAutoSectionRefC& operator=(mzCriticalAutoSectionRefC const&) = delete;

  private:
    mzCriticalSectionObjectC const* section_;
};
