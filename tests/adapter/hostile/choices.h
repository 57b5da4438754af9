/// A program of the hostile client: bytes, each of them a choice.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace velk::test::hostile {

using Program = std::vector<std::uint8_t>;

class Choices {
  public:
    explicit Choices(std::span<std::uint8_t const> bytes) : bytes_(bytes) {}

    bool more() const { return !bytes_.empty(); }
    /// 0 for ever once the program is used up.
    unsigned byte() {
        if (bytes_.empty()) return 0;
        unsigned const first = bytes_[0];
        bytes_ = bytes_.subspan(1);
        return first;
    }
    unsigned below(std::size_t count) { return byte() % static_cast<unsigned>(count); }
    bool oneIn(unsigned count) { return byte() % count == 1; }
    template <class Bits>
    Bits bits() {
        unsigned char bytes[sizeof(Bits)];
        for (auto& one : bytes) one = static_cast<unsigned char>(byte());
        Bits value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    template <class List>
    auto const& of(List const& list) {
        return list[below(std::size(list))];
    }
    /// The next bytes, for somebody else.
    Choices part(std::size_t size) {
        auto const taken = bytes_.first(std::min(size, bytes_.size()));
        bytes_ = bytes_.subspan(taken.size());
        return Choices(taken);
    }

  private:
    std::span<std::uint8_t const> bytes_;
};

}  // namespace velk::test::hostile
