#include "platform/system/thread_end.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include <unistd.h>
#include <winbase.h>

namespace velk::platform {
namespace {

/// One attached module. `inside` counts the threads that are in its entry.
struct Attachment {
    DllEntryPoint entry;
    HMODULE module;
    int inside = 0;
};

/// Modules in the order of their attachment. The entries are called without
/// the lock; `inside` keeps a module from going away meanwhile.
class Attachments {
  public:
    void add(DllEntryPoint entry, HMODULE module) {
        auto attachment = std::make_shared<Attachment>(Attachment{entry, module});
        std::lock_guard const guard(lock_);
        attached_.push_back(std::move(attachment));
    }

    void remove(DllEntryPoint entry) {
        std::unique_lock guard(lock_);
        auto const found =
            std::find_if(attached_.rbegin(), attached_.rend(),
                         [&](auto const& attachment) { return attachment->entry == entry; });
        if (found == attached_.rend()) return;
        auto const attachment = *found;
        attached_.erase(std::next(found).base());
        // A module may detach itself from inside its own entry: that one call
        // is not waited for.
        int const own = currentOfThisThread == attachment.get() ? 1 : 0;
        left_.wait(guard, [&] { return attachment->inside == own; });
    }

    /// Tells every attached module, the last attached first.
    void tellThreadDetach() {
        std::vector<std::shared_ptr<Attachment>> all;
        {
            std::lock_guard const guard(lock_);
            all = attached_;
        }
        for (auto next = all.rbegin(); next != all.rend(); ++next) tell(**next);
    }

  private:
    void tell(Attachment& attachment) {
        {
            std::lock_guard const guard(lock_);
            auto const same = [&](auto const& other) { return other.get() == &attachment; };
            if (std::none_of(attached_.begin(), attached_.end(), same)) return;
            ++attachment.inside;
        }
        Attachment const* const outer = currentOfThisThread;
        currentOfThisThread = &attachment;
        attachment.entry(attachment.module, DLL_THREAD_DETACH, nullptr);
        currentOfThisThread = outer;
        {
            std::lock_guard const guard(lock_);
            --attachment.inside;
        }
        left_.notify_all();
    }

    static thread_local Attachment const* currentOfThisThread;

    std::mutex lock_;
    std::condition_variable left_;
    std::vector<std::shared_ptr<Attachment>> attached_;
};

thread_local Attachment const* Attachments::currentOfThisThread = nullptr;

// Never destroyed: threads may end after the static objects of the process.
Attachments& attachments() {
    static auto& all = *new Attachments;
    return all;
}

std::array<std::atomic<void (*)() noexcept>, 4> endActions{};

/// Its destructor is the end of the thread.
struct ThreadWatch {
    ~ThreadWatch() {
        attachments().tellThreadDetach();
        for (auto const& action : endActions) {
            if (auto* const run = action.load(std::memory_order_acquire)) run();
        }
    }
};

// The main thread's end is the end of the process, which is told to modules
// in another way; its watch must not fire.
bool isMainThread() noexcept {
    return gettid() == getpid();
}

HMODULE moduleAround(DllEntryPoint entry) {
    HMODULE module = nullptr;
    GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(entry), &module);
    return module;
}

}  // namespace

void watchThreadEnd() noexcept {
    // Without a destructor of its own, so that it may be read after the watch is gone.
    thread_local bool watched = false;
    if (watched) return;
    watched = true;
    if (isMainThread()) return;
    thread_local ThreadWatch const watch;
    static_cast<void>(watch);
}

void addThreadEndAction(void (*action)() noexcept) noexcept {
    for (auto& slot : endActions) {
        void (*free)() noexcept = nullptr;
        if (slot.compare_exchange_strong(free, action, std::memory_order_acq_rel)) return;
    }
}

}  // namespace velk::platform

void VelkAttachModule(DllEntryPoint entry) {
    if (entry == nullptr) return;
    velk::platform::attachments().add(entry, velk::platform::moduleAround(entry));
}

void VelkDetachModule(DllEntryPoint entry) {
    if (entry == nullptr) return;
    velk::platform::attachments().remove(entry);
}
