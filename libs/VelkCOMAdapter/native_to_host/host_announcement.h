/// Which number is the address of a host object.
#pragma once

#include "com/com_ptr.h"
#include "host/dispatch.h"

namespace velk::adapter {

/// Announces, on this thread and for a scope, that a host object is about to
/// be handed to a facade as a number. Clients reach the same method with any
/// number; only an announced one is ever used as an address.
class HostAnnouncement {
  public:
    /// `object` may be null and must outlive the scope.
    explicit HostAnnouncement(mzIDispatch* object) noexcept : former_(announced_) {
        announced_ = object;
    }
    ~HostAnnouncement() { announced_ = former_; }
    HostAnnouncement(HostAnnouncement const&) = delete;
    HostAnnouncement& operator=(HostAnnouncement const&) = delete;

    /// The object that was announced under this number; null for every other.
    static mzIDispatch* find(LONGLONG number) noexcept {
        return numberOf(announced_) == number ? announced_ : nullptr;
    }
    static LONGLONG numberOf(mzIDispatch* object) noexcept {
        return static_cast<LONGLONG>(reinterpret_cast<ULONG_PTR>(object));
    }

  private:
    // No destructor: a thread that ends does not keep the module loaded.
    static thread_local mzIDispatch* announced_;

    mzIDispatch* former_;
};

}  // namespace velk::adapter
