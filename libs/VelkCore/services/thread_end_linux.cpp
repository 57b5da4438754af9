#include "services/thread_end.h"

namespace velk::core {
namespace {

// Without a destructor, so that it outlives the thread's other values.
thread_local constinit bool mark = false;

struct EndWithThread {
    std::shared_ptr<ThreadRun> run;
    ~EndWithThread() {
        if (run) run->active.store(false);
    }
};

}  // namespace

void atThreadEnd(void (*action)(void*), void* value) {
    thread_local ThreadEndActions actions;
    actions.add(action, value);
}

bool threadMark() noexcept {
    return mark;
}

void setThreadMark(bool set) noexcept {
    mark = set;
}

ThreadRunEnd::ThreadRunEnd(std::shared_ptr<ThreadRun> run) noexcept {
    thread_local EndWithThread end;
    end.run = std::move(run);
}

ThreadRunEnd::~ThreadRunEnd() = default;

}  // namespace velk::core
