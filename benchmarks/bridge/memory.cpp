#include "memory.h"

#include <malloc.h>

std::size_t allocatedBytes() {
    struct mallinfo2 const info = mallinfo2();
    return info.uordblks + info.hblkhd;
}
