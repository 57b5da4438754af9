#pragma once

#include <cstddef>
#include <new>

#include "host/export.h"

/// Base of the runtime's memory-managed objects: their storage comes from
/// Qt's `qMalloc` and goes back with `qFree`, whatever module runs `delete`.
class VELKCORE_API PMemManager {
  public:
    /// Throws `std::bad_alloc` when memory runs out.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, std::nothrow_t const&) noexcept;
    static void* operator new(std::size_t, void* place) noexcept { return place; }
    static void operator delete(void* storage) noexcept;
    static void operator delete(void* storage, std::nothrow_t const&) noexcept;
    static void operator delete(void*, void*) noexcept {}

  protected:
    ~PMemManager() = default;
};
