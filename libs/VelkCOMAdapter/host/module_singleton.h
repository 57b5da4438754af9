#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
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
    /// clean-up runs. std::logic_error on the thread that is just making or
    /// ending it.
    static T& instance() {
        if (T* const found = instanceIfPossible()) return *found;
        throw std::logic_error("a singleton was asked for by its own creation or end");
    }

    /// The same, but null on the thread that is just making or ending it, which
    /// would wait for itself.
    static T* instanceIfPossible() {
        for (;;) {
            // Acquire: who sees "ready" sees the constructed instance.
            if (std::atomic_ref(state_).load(std::memory_order_acquire) == ready) return instance_;
            if (mzThreadSafeExchangeInt(&state_, absent, creating)) return &create();
            if (busyThread_ == std::this_thread::get_id()) return nullptr;
            mzSleep(pollMilliseconds);
        }
    }

    /// Destroys the instance when there is one; what the global clean-up calls.
    static void cleanup() {
        if (!mzThreadSafeExchangeInt(&state_, ready, destroying)) return;
        busyThread_ = std::this_thread::get_id();
        baselog_singleton_changed(typeid(T).name(), &cleanup, priority, 1);
        destroy();
        busyThread_ = std::thread::id();
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
        busyThread_ = std::this_thread::get_id();
        try {
            baselog_singleton_changed(typeid(T).name(), &cleanup, priority, 0);
            instance_ = std::make_unique<T>().release();
            mzRegisterGlobalCleanup(&cleanup, priority);
        } catch (...) {
            destroy();
            busyThread_ = std::thread::id();
            mzThreadSafeExchangeInt(&state_, creating, absent);
            throw;
        }
        T& created = *instance_;
        busyThread_ = std::thread::id();
        mzThreadSafeExchangeInt(&state_, creating, ready);
        return created;
    }

    static inline int state_ = absent;
    // The thread that is making or ending the instance.
    static inline std::atomic<std::thread::id> busyThread_{};
    // Not a smart pointer: the clean-up alone ends the instance, not the
    // order in which the module's static objects go.
    static inline T* instance_ = nullptr;
};
