/// Little-endian reading within bounds.
#pragma once

#include <cstring>
#include <span>
#include <string_view>

#include "platform/typelib/owners.h"

namespace velk::typelib {

/// Bytes of a file. Every read outside of them fails with TYPE_E_INVDATAREAD.
class ByteView {
  public:
    ByteView() = default;
    explicit ByteView(std::span<std::byte const> bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }
    std::byte const* data() const { return bytes_.data(); }

    template <typename T>
    T read(std::size_t offset) const {
        require(offset <= bytes_.size() && sizeof(T) <= bytes_.size() - offset, TYPE_E_INVDATAREAD);
        T value;
        std::memcpy(&value, bytes_.data() + offset, sizeof(T));
        return value;
    }
    BYTE u8(std::size_t offset) const { return read<BYTE>(offset); }
    WORD u16(std::size_t offset) const { return read<WORD>(offset); }
    DWORD u32(std::size_t offset) const { return read<DWORD>(offset); }
    LONG i32(std::size_t offset) const { return read<LONG>(offset); }
    GUID guid(std::size_t offset) const { return read<GUID>(offset); }

    ByteView part(std::size_t offset, std::size_t length) const {
        require(offset <= bytes_.size() && length <= bytes_.size() - offset, TYPE_E_INVDATAREAD);
        return ByteView(bytes_.subspan(offset, length));
    }
    ByteView from(std::size_t offset) const {
        require(offset <= bytes_.size(), TYPE_E_INVDATAREAD);
        return ByteView(bytes_.subspan(offset));
    }
    std::string_view text(std::size_t offset, std::size_t length) const {
        auto const own = part(offset, length);
        return {reinterpret_cast<char const*>(own.data()), length};
    }

  private:
    std::span<std::byte const> bytes_;
};

}  // namespace velk::typelib
