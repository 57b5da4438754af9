#include "platform/com/global_interfaces.h"

#include <algorithm>
#include <mutex>

namespace velk::platform::com {

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

}  // namespace velk::platform::com
