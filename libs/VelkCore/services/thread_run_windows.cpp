#include <utility>

#include "services/thread_run.h"

namespace velk::core {

ThreadRunEnd::ThreadRunEnd(std::shared_ptr<ThreadRun> run) noexcept : run_(std::move(run)) {}

ThreadRunEnd::~ThreadRunEnd() {
    run_->active.store(false);
}

}  // namespace velk::core
