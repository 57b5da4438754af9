/// Owners of what a value of a property holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include <objbase.h>
#include <propidl.h>

namespace velk::platform::storage {

/// Owns a PROPVARIANT.
class HeldValue {
  public:
    HeldValue() = default;
    HeldValue(HeldValue&& other) noexcept : value_(std::exchange(other.value_, {})) {}
    HeldValue& operator=(HeldValue&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~HeldValue() { PropVariantClear(&value_); }

    PROPVARIANT& get() noexcept { return value_; }
    PROPVARIANT release() noexcept { return std::exchange(value_, {}); }

  private:
    PROPVARIANT value_{};
};

struct FreeTaskMemory {
    void operator()(void* block) const noexcept { CoTaskMemFree(block); }
};
template <typename Element>
using TaskArray = std::unique_ptr<Element[], FreeTaskMemory>;

/// Zeroed memory of CoTaskMemAlloc. Throws std::bad_alloc.
template <typename Element>
TaskArray<Element> taskArray(std::size_t count) {
    std::size_t const size = std::max<std::size_t>(count * sizeof(Element), 1);
    void* const block = CoTaskMemAlloc(size);
    if (block == nullptr) throw std::bad_alloc();
    std::fill_n(static_cast<std::byte*>(block), size, std::byte{});
    return TaskArray<Element>(static_cast<Element*>(block));
}

/// A copy with a zero behind it.
template <typename Character>
TaskArray<Character> taskText(std::basic_string_view<Character> text) {
    auto made = taskArray<Character>(text.size() + 1);
    std::copy(text.begin(), text.end(), made.get());
    return made;
}

inline TaskArray<BYTE> taskBytes(std::span<std::byte const> bytes) {
    auto made = taskArray<BYTE>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::byte*>(made.get()));
    return made;
}

}  // namespace velk::platform::storage
