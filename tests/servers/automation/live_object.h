/// The count of the server's objects.
#pragma once

#include <atomic>

namespace velk::test::server {

/// Base of every class of the server: counts while it lives.
class LiveObject {
  public:
    static long count() noexcept { return live_; }
    LiveObject(LiveObject const&) = delete;
    LiveObject& operator=(LiveObject const&) = delete;

  protected:
    LiveObject() noexcept { ++live_; }
    ~LiveObject() { --live_; }

  private:
    inline static std::atomic<long> live_{0};
};

}  // namespace velk::test::server
