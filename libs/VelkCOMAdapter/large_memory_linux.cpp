#include <sys/mman.h>

#include "large_memory.h"

namespace velk::adapter {

void preferLargePages(void* memory, std::size_t bytes) noexcept {
    // Only whole pages: a small table must not take a large page's memory.
    std::size_t const whole = bytes / largePageBytes * largePageBytes;
    if (whole != 0) madvise(memory, whole, MADV_HUGEPAGE);
}

}  // namespace velk::adapter
