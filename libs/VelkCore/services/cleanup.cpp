#include "host/cleanup.h"

#include <algorithm>
#include <mutex>
#include <optional>
#include <vector>

#include "host/logger.h"
#include "services/immortal.h"
#include "services/system.h"

namespace {

using Cleanup = void (*)();

struct Entry {
    Cleanup cleanup;
    int priority;
    void const* module;
};

struct Registry {
    std::mutex mutex;
    // In the order of registration.
    std::vector<Entry> entries;
};

Registry& registry() {
    static velk::core::Immortal<Registry> instance;
    return *instance;
}

/// Takes out the clean-up that is to run next among those of `module`, or of
/// every module when that is empty.
Cleanup takeNext(std::optional<void const*> module) {
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    auto best = all.entries.end();
    for (auto entry = all.entries.begin(); entry != all.entries.end(); ++entry) {
        if (module && entry->module != *module) continue;
        if (best == all.entries.end() || entry->priority >= best->priority) best = entry;
    }
    if (best == all.entries.end()) return nullptr;
    Cleanup const cleanup = best->cleanup;
    all.entries.erase(best);
    return cleanup;
}

std::size_t count() {
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    return all.entries.size();
}

void run(std::optional<void const*> module) {
    // A clean-up may register another one; one that always does so must not
    // keep the module from being unloaded.
    constexpr std::size_t extraRuns = 64;
    for (std::size_t left = count() + extraRuns; left > 0; --left) {
        Cleanup const cleanup = takeNext(module);
        if (!cleanup) return;
        try {
            cleanup();
        } catch (...) {
            // The clean-up failed; the ones after it are still owed.
        }
    }
}

}  // namespace

void mzRegisterGlobalCleanup(void (*cleanup)(), int priority) {
    if (!cleanup) return;
    void const* const module = velk::core::moduleOfAddress(reinterpret_cast<void const*>(cleanup));
    Registry& all = registry();
    std::lock_guard const guard(all.mutex);
    all.entries.push_back({cleanup, priority, module});
}

void mzRunGlobalCleanupFor(void* address) {
    run(velk::core::moduleOfAddress(address));
}

void mzRunGlobalCleanup() {
    run(std::nullopt);
}

void baselog_singleton_changed(char const* typeName, void (*)(), int priority, int event) {
    constexpr int level = 1000;
    if (!baseLogger.wants(level)) return;
    static char const* const phases[] = {"is created", "is destroyed", "was destroyed"};
    char const* const phase = event >= 0 && event <= 2 ? phases[event] : "changed";
    baseLogger.log(level, "cleanup.cpp", "baselog_singleton_changed", 0,
                   mzComStringC("Singleton ") + typeName + " " + phase + ", priority " +
                       mzComStringC::fromInt(priority, 10));
}
