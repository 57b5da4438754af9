/// Running code where little stack is left.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

namespace velk::test {

/// Runs `body` on a thread of its own whose stack has 256 KiB, and waits for its
/// end. False when the system makes no such thread.
inline bool withSmallStack(std::function<void()> body) {
    constexpr std::size_t stack = std::size_t{256} * 1024;
    auto const run = [](void* function) -> void* {
        (*static_cast<std::function<void()>*>(function))();
        return nullptr;
    };
    pthread_attr_t attributes;
    pthread_t thread;
    if (pthread_attr_init(&attributes) != 0) return false;
    bool const started = pthread_attr_setstacksize(&attributes, stack) == 0 &&
                         pthread_create(&thread, &attributes, run, &body) == 0;
    pthread_attr_destroy(&attributes);
    return started && pthread_join(thread, nullptr) == 0;
}

/// How deep test structures are nested: far beyond what any stack holds; less
/// where a checker makes every step slow.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int greatDepth = 50'000;
#else
inline constexpr int greatDepth = 1'000'000;
#endif

}  // namespace velk::test
