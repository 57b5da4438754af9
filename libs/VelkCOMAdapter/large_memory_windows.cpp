#include "large_memory.h"

namespace velk::adapter {

// Large pages need a privilege that programs do not have by default.
void preferLargePages(void*, std::size_t) noexcept {}

}  // namespace velk::adapter
