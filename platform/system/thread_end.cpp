#include "platform/system/thread_end.h"

#include <array>
#include <atomic>
#include <cstdlib>

#include <unistd.h>
#include <winbase.h>

#include "platform/system/attached_modules.h"

namespace velk::platform {
namespace {

std::array<std::atomic<void (*)() noexcept>, 4> endActions{};

/// Its destructor is the end of the thread.
struct ThreadWatch {
    ~ThreadWatch() {
        tellThreadDetach();
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

/// The C library ends the process when it lacks the memory to note down a
/// destructor; without that much the next meeting has to do. The trial is so
/// large that what is given back serves any request.
bool canNoteDestructor() noexcept {
    constexpr std::size_t trialSize = 4096;
    void* volatile const trial = std::malloc(trialSize);
    std::free(trial);
    return trial != nullptr;
}

}  // namespace

void watchThreadEnd() noexcept {
    // Without a destructor of its own, so that it may be read after the watch is gone.
    thread_local bool watched = false;
    if (watched || !canNoteDestructor()) return;
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
    velk::platform::attachModule(entry);
}

void VelkDetachModule(DllEntryPoint entry) {
    if (entry == nullptr) return;
    velk::platform::detachModule(entry);
}
