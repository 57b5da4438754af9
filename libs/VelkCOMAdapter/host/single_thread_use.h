#pragma once

#include <atomic>
#include <cstddef>

#include "host/export.h"

/// What a call says that is refused because another thread is in the object.
inline constexpr char const* mzInUseText = "The object is in use by another thread";

/// Keeps a second thread out of an object that any thread may use, but only one
/// at a time. Nobody waits: who comes while another thread is inside is
/// refused. The thread that is inside may come in again, from a call back for
/// instance.
class VELKCORE_API mzSingleThreadUseC {
  public:
    mzSingleThreadUseC() = default;
    mzSingleThreadUseC(mzSingleThreadUseC const&) = delete;
    mzSingleThreadUseC& operator=(mzSingleThreadUseC const&) = delete;

    /// The calling thread's stay in the object, which must outlive it.
    class Use {
      public:
        explicit Use(mzSingleThreadUseC& object) noexcept
            : object_(object), entry_(object.enter()) {}
        ~Use() {
            if (entry_ == Entry::first) object_.user_.store(0, std::memory_order_release);
        }
        Use(Use const&) = delete;
        Use& operator=(Use const&) = delete;

        /// False while another thread is inside: the object must be left alone.
        bool granted() const noexcept { return entry_ != Entry::refused; }

      private:
        mzSingleThreadUseC& object_;
        enum class Entry { refused, first, again } const entry_;
        friend class mzSingleThreadUseC;
    };

  private:
    Use::Entry enter() noexcept;

    // Number of the thread inside, 0 for none.
    std::atomic<std::size_t> user_{0};
};
