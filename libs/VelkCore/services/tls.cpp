#include "host/tls.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "services/immortal.h"
#include "services/thread_end.h"

namespace {

using Destroy = void (*)(void*);

// Modules take a slot or two each.
constexpr int maxSlots = 256;

struct Slot {
    std::atomic<bool> used{false};
    Destroy destroy = nullptr;
    // Threads that are running `destroy` at their end.
    int destroying = 0;
};

/// A thread's values, at addresses that never change.
struct ThreadValues {
    std::array<void*, maxSlots> values{};
};

struct Registry {
    std::mutex mutex;
    std::condition_variable destroyed;
    std::array<Slot, maxSlots> slots;
    std::vector<ThreadValues*> threads;
};

Registry& registry() {
    static velk::core::Immortal<Registry> instance;
    return *instance;
}

// The slot whose value this thread is destroying at its end, -1 for none.
thread_local constinit int slotInDestruction = -1;

/// Destroys one value of an ending thread; false when the slot has none.
bool destroyValue(ThreadValues& thread, int index) {
    Registry& all = registry();
    std::unique_lock lock(all.mutex);
    Slot& slot = all.slots[index];
    void* const value = thread.values[index];
    thread.values[index] = nullptr;
    if (!value || !slot.used.load() || !slot.destroy) return false;
    Destroy const destroy = slot.destroy;
    ++slot.destroying;
    lock.unlock();
    slotInDestruction = index;
    destroy(value);
    slotInDestruction = -1;
    lock.lock();
    --slot.destroying;
    all.destroyed.notify_all();
    return true;
}

thread_local constinit ThreadValues* current = nullptr;
thread_local constinit bool ended = false;

/// Ends the thread's values with the thread.
void endValues(void* ending) {
    std::unique_ptr<ThreadValues> const values(static_cast<ThreadValues*>(ending));
    // What is destroyed may still ask for the thread's values.
    current = values.get();
    // Destroying one value may set another; what is set again and again is
    // left behind after a few rounds.
    constexpr int rounds = 4;
    for (int round = 0, found = 1; found && round < rounds; ++round) {
        found = 0;
        for (int i = 0; i < maxSlots; ++i) found += destroyValue(*values, i);
    }
    current = nullptr;
    ended = true;
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    std::erase(all.threads, values.get());
}

ThreadValues* currentValues() {
    if (current || ended) return current;
    auto fresh = std::make_unique<ThreadValues>();
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    all.threads.reserve(all.threads.size() + 1);
    velk::core::atThreadEnd(&endValues, fresh.get());
    all.threads.push_back(fresh.get());
    return current = fresh.release();
}

bool isSlot(int slot) {
    return slot >= 1 && slot <= maxSlots && registry().slots[slot - 1].used.load();
}

/// Takes the slot's values from every thread.
std::vector<void*> takeValues(Registry& all, int index) {
    std::vector<void*> taken;
    taken.reserve(all.threads.size());
    for (ThreadValues* const thread : all.threads) {
        if (void* const value = thread->values[index]) taken.push_back(value);
        thread->values[index] = nullptr;
    }
    return taken;
}

}  // namespace

int mzTlsAlloc(void (*destroy)(void*)) {
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    for (int i = 0; i < maxSlots; ++i) {
        Slot& slot = all.slots[i];
        if (slot.used.load() || slot.destroying != 0) continue;
        slot.destroy = destroy;
        slot.used.store(true);
        return i + 1;
    }
    return 0;
}

void** mzTlsGet(int slot) {
    if (!isSlot(slot)) return nullptr;
    ThreadValues* const values = currentValues();
    return values ? &values->values[slot - 1] : nullptr;
}

void mzTlsFree(int slot) {
    if (!isSlot(slot)) return;
    int const index = slot - 1;
    Registry& all = registry();
    std::unique_lock lock(all.mutex);
    Destroy const destroy = all.slots[index].destroy;
    std::vector<void*> const values = takeValues(all, index);
    all.slots[index].used.store(false);
    if (slotInDestruction != index) {
        all.destroyed.wait(lock, [&] { return all.slots[index].destroying == 0; });
    }
    lock.unlock();
    if (!destroy) return;
    for (void* const value : values) destroy(value);
}
