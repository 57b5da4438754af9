#include "services/thread_end.h"
#include "services/thread_end_actions.h"

namespace velk::core {
namespace {

// Without a destructor, so that it outlives the thread's other values.
thread_local constinit bool mark = false;

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

}  // namespace velk::core
