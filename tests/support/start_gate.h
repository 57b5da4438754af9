/// Having threads begin at the same moment.
#pragma once

#include <condition_variable>
#include <mutex>

namespace velk::test {

/// Opens when a number of threads have come. (The C++ library's barrier can
/// miss a wake-up where the system has no call to sleep on a number.)
class StartGate {
  public:
    explicit StartGate(int threads) : missing_(threads) {}

    /// Returns once all threads have called this.
    void arriveAndWait() {
        std::unique_lock hold(lock_);
        if (--missing_ == 0) opened_.notify_all();
        opened_.wait(hold, [this] { return missing_ <= 0; });
    }

  private:
    std::mutex lock_;
    std::condition_variable opened_;
    int missing_;
};

}  // namespace velk::test
