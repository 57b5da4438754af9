/// Objects that last as long as the process.
#pragma once

#include <new>

namespace velk::platform {

/// An object that is never destroyed, as a function-local static: modules and
/// threads reach it until the very end of the process. Its own memory is static,
/// so that the first use can fail only where the object itself needs more.
template <typename T>
class Immortal {
  public:
    Immortal() noexcept(noexcept(T())) { ::new (storage_) T(); }
    Immortal(Immortal const&) = delete;
    Immortal& operator=(Immortal const&) = delete;

    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(storage_)); }

  private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace velk::platform
