#include <utility>

#include "services/thread_run.h"

namespace velk::core {
namespace {

struct EndWithThread {
    std::shared_ptr<ThreadRun> run;
    ~EndWithThread() {
        if (run) run->active.store(false);
    }
};

}  // namespace

ThreadRunEnd::ThreadRunEnd(std::shared_ptr<ThreadRun> run) noexcept {
    thread_local EndWithThread end;
    end.run = std::move(run);
}

ThreadRunEnd::~ThreadRunEnd() = default;

}  // namespace velk::core
