#pragma once

#include <new>
#include <utility>

namespace velk::core {

/// An object that is made on first use and never destroyed, as a function-local
/// static: modules that are torn down at the end of the process still reach it.
template <class T>
class Immortal {
  public:
    template <class... Arguments>
    explicit Immortal(Arguments&&... arguments) {
        new (storage_) T(std::forward<Arguments>(arguments)...);
    }
    Immortal(Immortal const&) = delete;
    Immortal& operator=(Immortal const&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(storage_)); }
    T* operator->() { return &**this; }

  private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace velk::core
