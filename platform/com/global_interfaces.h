/// What a process has registered for all of its threads.
#pragma once

#include <array>
#include <atomic>
#include <memory>
#include <unordered_map>
#include <vector>

#include "platform/com/held_object.h"
#include "platform/com/spin_lock.h"

namespace velk::platform::com {

/// Objects under cookies. Thread-safe; no lock is held while a foreign object
/// is called.
///
/// The table is divided by threads and not by cookies: a lookup takes the lock
/// of the calling thread's own stripe, so that many threads that look up one
/// cookie write no common memory. A change takes the locks of all stripes.
class GlobalInterfaces {
  public:
    /// Keeps `object` and gives its cookie, which is never 0 and not one that
    /// was given out lately. Throws std::bad_alloc.
    DWORD add(HeldObject<> object);

    /// Lets go of what a cookie stands for, or has the last thread do so that
    /// is using it. False for an unknown cookie.
    bool revoke(DWORD cookie) noexcept;

    /// Asks what a cookie stands for. E_INVALIDARG for an unknown one. Throws
    /// std::bad_alloc.
    HRESULT query(DWORD cookie, REFIID riid, void** object);

  private:
    struct Entry {
        HeldObject<> object;
        /// Changes under the locks of all stripes.
        bool revoked = false;
        /// Once revoked: how many threads still use it. The last one frees it.
        std::atomic<std::size_t> usersLeft{0};
    };
    struct alignas(64) Stripe {
        SpinLock lock;
        /// What threads of this stripe are using, once for each use.
        std::vector<Entry*> inUse;
    };
    class Use;
    class AllStripes;

    static constexpr std::size_t stripeCount = 16;
    Stripe& ownStripe() noexcept;

    std::array<Stripe, stripeCount> stripes_;
    // Read under any stripe's lock, changed under the locks of all.
    std::unordered_map<DWORD, std::unique_ptr<Entry>> entries_;
    DWORD lastCookie_ = 0xFF;
};

}  // namespace velk::platform::com
