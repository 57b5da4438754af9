#include "platform/com/global_interface_table.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/com/apartments.h"
#include "platform/com/held_object.h"
#include "platform/system/immortal.h"

namespace velk::platform::com {
namespace {

/// Mutual exclusion that waits by trying again. Entering it costs one atomic
/// operation and leaving it a plain store.
class SpinLock {
  public:
    void lock() noexcept {
        while (taken_.exchange(true, std::memory_order_acquire)) wait();
    }
    void unlock() noexcept { taken_.store(false, std::memory_order_release); }

  private:
    void wait() const noexcept {
        // The thread that is waited for may have to run on this very core.
        constexpr int roundsBeforeYield = 64;
        for (int round = 0; taken_.load(std::memory_order_relaxed); ++round) {
            if (round >= roundsBeforeYield) std::this_thread::yield();
        }
    }

    std::atomic<bool> taken_{false};
};

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

/// The locks of all stripes, always taken in the same order.
class GlobalInterfaces::AllStripes {
  public:
    explicit AllStripes(GlobalInterfaces& table) : table_(table) {
        for (auto& stripe : table_.stripes_) stripe.lock.lock();
    }
    AllStripes(AllStripes const&) = delete;
    AllStripes& operator=(AllStripes const&) = delete;
    ~AllStripes() {
        for (auto& stripe : table_.stripes_) stripe.lock.unlock();
    }

  private:
    GlobalInterfaces& table_;
};

/// One thread's use of an entry, which stays whole meanwhile.
class GlobalInterfaces::Use {
  public:
    Use(GlobalInterfaces& table, DWORD cookie) : stripe_(table.ownStripe()) {
        std::lock_guard const guard(stripe_.lock);
        auto const found = table.entries_.find(cookie);
        if (found == table.entries_.end()) return;
        stripe_.inUse.push_back(found->second.get());
        entry_ = found->second.get();
    }
    Use(Use const&) = delete;
    Use& operator=(Use const&) = delete;
    ~Use() {
        if (entry_ != nullptr && leave() && --entry_->usersLeft == 0) {
            std::unique_ptr<Entry> const last(entry_);
        }
    }
    Entry const* entry() const noexcept { return entry_; }

  private:
    /// Ends the use; whether the entry was revoked meanwhile.
    bool leave() noexcept {
        std::lock_guard const guard(stripe_.lock);
        auto const own = std::find(stripe_.inUse.begin(), stripe_.inUse.end(), entry_);
        *own = stripe_.inUse.back();
        stripe_.inUse.pop_back();
        return entry_->revoked;
    }

    Stripe& stripe_;
    Entry* entry_ = nullptr;
};

GlobalInterfaces::Stripe& GlobalInterfaces::ownStripe() noexcept {
    static std::atomic<std::size_t> nextThread{0};
    thread_local std::size_t const own = nextThread.fetch_add(1, std::memory_order_relaxed);
    return stripes_[own % stripeCount];
}

DWORD GlobalInterfaces::add(HeldObject<> object) {
    auto entry = std::make_unique<Entry>();
    entry->object = std::move(object);
    AllStripes const locked(*this);
    do {
        ++lastCookie_;
    } while (lastCookie_ == 0 || entries_.contains(lastCookie_));
    entries_.try_emplace(lastCookie_, std::move(entry));
    return lastCookie_;
}

bool GlobalInterfaces::revoke(DWORD cookie) noexcept {
    // Outside the locks, since its end calls the object.
    std::unique_ptr<Entry> entry;
    AllStripes const locked(*this);
    auto const found = entries_.find(cookie);
    if (found == entries_.end()) return false;
    entry = std::move(found->second);
    entries_.erase(found);
    std::size_t users = 0;
    for (auto const& stripe : stripes_) {
        users += static_cast<std::size_t>(
            std::count(stripe.inUse.begin(), stripe.inUse.end(), entry.get()));
    }
    entry->revoked = true;
    entry->usersLeft = users;
    if (users != 0) static_cast<void>(entry.release());
    return true;
}

HRESULT GlobalInterfaces::query(DWORD cookie, REFIID riid, void** object) {
    Use const use(*this, cookie);
    if (use.entry() == nullptr) return E_INVALIDARG;
    return use.entry()->object->QueryInterface(riid, object);
}

/// IUnknown of an object that lasts as long as the process.
template <typename Interface, IID const& id>
class Lasting : public Interface {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        bool const known = riid == IID_IUnknown || riid == id;
        *object = known ? static_cast<Interface*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 1; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }
};

// Never destroyed: what is registered stays with the process.
GlobalInterfaces& interfaces() {
    static Immortal<GlobalInterfaces> all;
    return *all;
}

class Table final : public Lasting<IGlobalInterfaceTable, IID_IGlobalInterfaceTable> {
  public:
    HRESULT STDMETHODCALLTYPE RegisterInterfaceInGlobal(IUnknown* unknown, REFIID riid,
                                                        DWORD* cookie) noexcept override {
        if (unknown == nullptr || cookie == nullptr) return E_INVALIDARG;
        *cookie = 0;
        if (!isInApartment()) return CO_E_NOTINITIALIZED;
        HeldObject<> object;
        auto** const place = object.target();
        HRESULT const result =
            askForObject(place, [&] { return unknown->QueryInterface(riid, place); });
        if (FAILED(result)) return result;
        return guarded([&] { *cookie = interfaces().add(std::move(object)); });
    }
    HRESULT STDMETHODCALLTYPE RevokeInterfaceFromGlobal(DWORD cookie) noexcept override {
        return interfaces().revoke(cookie) ? S_OK : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE GetInterfaceFromGlobal(DWORD cookie, REFIID riid,
                                                     void** object) noexcept override {
        if (object == nullptr) return E_INVALIDARG;
        return askForObject(object, [&] {
            return isInApartment() ? interfaces().query(cookie, riid, object) : CO_E_NOTINITIALIZED;
        });
    }
};
constinit Table table;

class TableClass final : public Lasting<IClassFactory, IID_IClassFactory> {
  public:
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid,
                                             void** object) noexcept override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        return outer != nullptr ? CLASS_E_NOAGGREGATION : table.QueryInterface(riid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }
};
constinit TableClass tableClass;

}  // namespace

HRESULT globalInterfaceTableClass(REFIID riid, void** object) noexcept {
    return tableClass.QueryInterface(riid, object);
}

}  // namespace velk::platform::com
