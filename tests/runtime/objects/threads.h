/// What tests of several threads have in common.
#pragma once

#include <atomic>
#include <functional>
#include <future>
#include <thread>
#include <vector>

#include "sample_objects.h"
#include "support/start_gate.h"

namespace velk::test {

/// Runs `body(index)` on several threads at once and waits for all.
inline void inParallel(int threads, std::function<void(int)> const& body) {
    StartGate gate(threads);
    std::vector<std::jthread> running;
    for (int i = 0; i < threads; ++i) {
        running.emplace_back([&, i] {
            gate.arriveAndWait();
            body(i);
        });
    }
}

/// Whether a call was answered with true.
inline bool isTrue(Outcome const& outcome) {
    return outcome.code == mzSuccess && outcome.integer() != 0;
}

/// A thread that makes an object and then serves calls, or does not, until its end.
class Owner {
  public:
    explicit Owner(bool serves)
        : thread_([this, serves] {
              made_.set_value(mzComPtrC(new Sample));
              while (!stop_) serves ? (void)mzComSleep(5, 0, nullptr) : mzSleep(5);
          }),
          object_(made_.get_future().get()) {}
    ~Owner() { end(); }

    void end() {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }
    mzIUnknown* object() const { return object_.iface(); }
    Outcome call(char const* name, std::vector<mzComVariantC> const& args = {}) const {
        return test::call(object(), name, mzCallMethod, args);
    }

  private:
    std::atomic<bool> stop_{false};
    std::promise<mzComPtrC> made_;
    std::thread thread_;
    mzComPtrC object_;
};

}  // namespace velk::test
