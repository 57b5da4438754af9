/// Bytes of serialized property sets, read within bounds and put together.
/// Numbers stand with their lowest byte first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <vector>

#include <wtypes.h>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

using Bytes = std::span<std::byte const>;

/// What is read makes no sense.
inline constexpr HRESULT malformedSet = VELK_RESULT_CODE(0x8007000D);

constexpr std::size_t padded(std::size_t size) noexcept {
    return (size + 3) & ~std::size_t{3};
}

/// Reads from the beginning to the end of some bytes. Every member fails with
/// malformedSet where the bytes end too early.
class ByteReader {
  public:
    explicit ByteReader(Bytes bytes) noexcept : bytes_(bytes) {}

    std::size_t position() const noexcept { return at_; }
    std::size_t left() const noexcept { return bytes_.size() - at_; }
    /// Behind the last byte that was not passed over as padding.
    std::size_t end() const noexcept { return end_; }

    Bytes take(std::size_t count) {
        require(count <= left(), malformedSet);
        Bytes const taken = bytes_.subspan(at_, count);
        at_ += count;
        end_ = at_;
        return taken;
    }

    template <typename Number>
    requires std::is_trivially_copyable_v<Number> Number read() {
        Number number;
        std::memcpy(&number, take(sizeof number).data(), sizeof number);
        return number;
    }

    /// Goes on at a multiple of four bytes from `start`, or at the end.
    void skipPadding(std::size_t start) noexcept {
        at_ = std::min(start + padded(at_ - start), bytes_.size());
    }

  private:
    Bytes bytes_;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
};

/// Puts bytes one behind the other.
class ByteWriter {
  public:
    std::vector<std::byte> const& bytes() const noexcept { return bytes_; }
    std::vector<std::byte> take() noexcept { return std::move(bytes_); }
    std::size_t size() const noexcept { return bytes_.size(); }

    template <typename Number>
    requires(std::is_arithmetic_v<Number> || std::is_same_v<Number, GUID> ||
             std::is_same_v<Number, DECIMAL>) void write(Number const& number) {
        write(std::as_bytes(std::span(&number, 1)));
    }
    void write(Bytes bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
    void write(std::string_view text) { write(std::as_bytes(std::span(text))); }

    /// Zeros up to a multiple of four bytes from the beginning.
    void pad() { bytes_.resize(padded(bytes_.size())); }

    /// Writes over what stands at `offset`, which must be there.
    template <typename Number>
    void overwrite(std::size_t offset, Number const& number) noexcept {
        std::memcpy(bytes_.data() + offset, &number, sizeof number);
    }

  private:
    std::vector<std::byte> bytes_;
};

inline std::string_view textOf(Bytes bytes) noexcept {
    return {reinterpret_cast<char const*>(bytes.data()), bytes.size()};
}

}  // namespace velk::platform::storage
