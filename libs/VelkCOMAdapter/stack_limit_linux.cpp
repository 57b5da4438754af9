#include <pthread.h>

#include "stack_limit.h"

namespace velk::adapter {

std::uintptr_t lowestStackAddress() noexcept {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
    void* lowest = nullptr;
    std::size_t size = 0;
    std::size_t guard = 0;
    bool const known = pthread_attr_getstack(&attributes, &lowest, &size) == 0 &&
                       pthread_attr_getguardsize(&attributes, &guard) == 0;
    pthread_attr_destroy(&attributes);
    return known ? reinterpret_cast<std::uintptr_t>(lowest) + guard : 0;
}

}  // namespace velk::adapter
