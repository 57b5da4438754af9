#pragma once

#include <atomic>
#include <memory>
#include <typeinfo>

#include "host/cleanup.h"
#include "host/exchange.h"
#include "host/sleep.h"

/// One lazily created `T` of a module, destroyed by the runtime's global
/// clean-up at `priority` and created anew when it is asked for after that.
/// Any thread may ask; each module has its own.
template <class T, int priority>
class mzModuleSingletonT {
  public:
    /// The instance, created on first use. What its construction throws passes
    /// on, and the next call tries again. The reference is valid until the
    /// clean-up runs.
    static T& instance() {
        for (;;) {
            // Acquire: who sees "ready" sees the constructed instance.
            if (std::atomic_ref(state_).load(std::memory_order_acquire) == ready) return *instance_;
            if (mzThreadSafeExchangeInt(&state_, absent, creating)) return create();
            mzSleep(pollMilliseconds);
        }
    }

    /// Destroys the instance when there is one; what the global clean-up calls.
    static void cleanup() {
        if (!mzThreadSafeExchangeInt(&state_, ready, destroying)) return;
        baselog_singleton_changed(typeid(T).name(), &cleanup, priority, 1);
        destroy();
        mzThreadSafeExchangeInt(&state_, destroying, absent);
        baselog_singleton_changed(typeid(T).name(), &cleanup, priority, 2);
    }

    /// Whether there is an instance right now.
    static bool exists() { return std::atomic_ref(state_).load() == ready; }

  private:
    enum State : int { absent = 0, creating = 1, ready = 2, destroying = 3 };
    static constexpr int pollMilliseconds = 50;

    static void destroy() {
        std::unique_ptr<T>(instance_).reset();
        instance_ = nullptr;
    }

    static T& create() {
        try {
            baselog_singleton_changed(typeid(T).name(), &cleanup, priority, 0);
            instance_ = std::make_unique<T>().release();
            mzRegisterGlobalCleanup(&cleanup, priority);
        } catch (...) {
            destroy();
            mzThreadSafeExchangeInt(&state_, creating, absent);
            throw;
        }
        T& created = *instance_;
        mzThreadSafeExchangeInt(&state_, creating, ready);
        return created;
    }

    static inline int state_ = absent;
    // Not a smart pointer: the clean-up alone ends the instance, not the
    // order in which the module's static objects go.
    static inline T* instance_ = nullptr;
};
