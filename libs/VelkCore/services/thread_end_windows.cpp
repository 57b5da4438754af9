#include <pthread.h>
#include <windows.h>

#include <new>

#include "services/thread_end.h"

namespace velk::core {
namespace {

void runActions(void* actions) {
    delete static_cast<ThreadEndActions*>(actions);
}

// A key of the thread library: its destructors run for every thread, whoever
// made it, and the library repeats them while they leave new values behind.
pthread_key_t actionsKey() {
    static pthread_key_t const key = [] {
        pthread_key_t made = 0;
        if (pthread_key_create(&made, &runActions) != 0) throw std::bad_alloc();
        return made;
    }();
    return key;
}

// Storage of the system itself, which is there until the thread is gone.
DWORD markSlot() noexcept {
    static DWORD const slot = TlsAlloc();
    return slot;
}

}  // namespace

void atThreadEnd(void (*action)(void*), void* value) {
    pthread_key_t const key = actionsKey();
    auto* actions = static_cast<ThreadEndActions*>(pthread_getspecific(key));
    if (!actions) {
        auto fresh = std::make_unique<ThreadEndActions>();
        if (pthread_setspecific(key, fresh.get()) != 0) throw std::bad_alloc();
        actions = fresh.release();
    }
    actions->add(action, value);
}

bool threadMark() noexcept {
    return TlsGetValue(markSlot()) != nullptr;
}

void setThreadMark(bool set) noexcept {
    static char marked;
    TlsSetValue(markSlot(), set ? &marked : nullptr);
}

ThreadRunEnd::ThreadRunEnd(std::shared_ptr<ThreadRun> run) noexcept : run_(std::move(run)) {}

ThreadRunEnd::~ThreadRunEnd() {
    run_->active.store(false);
}

}  // namespace velk::core
