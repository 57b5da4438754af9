/// A file in memory that compound files are stored in.
#pragma once

#include <algorithm>
#include <vector>

#include "platform/storage/compound/file_access.h"
#include "platform/system/boundary.h"

namespace velk::fuzz {

namespace storage = platform::storage;

/// The bytes outlive the file object. It grows to `largest` bytes at most, as
/// a medium that is full: a sound file of this size needs no more.
class MemoryFile final : public storage::FileAccess {
  public:
    explicit MemoryFile(std::vector<std::byte>& bytes) : bytes_(bytes) {}

    std::uint64_t size() override { return bytes_.size(); }
    void read(std::uint64_t offset, storage::MutableBytes target) override {
        std::fill(target.begin(), target.end(), std::byte{0});
        if (offset >= bytes_.size()) return;
        auto const count =
            std::min(target.size(), bytes_.size() - static_cast<std::size_t>(offset));
        std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), count, target.begin());
    }
    void write(std::uint64_t offset, storage::Bytes source) override {
        platform::require(offset <= largest - source.size(), STG_E_MEDIUMFULL);
        auto const end = static_cast<std::size_t>(offset) + source.size();
        if (bytes_.size() < end) bytes_.resize(end);
        std::copy(source.begin(), source.end(),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(offset));
    }
    void truncate(std::uint64_t size) override { bytes_.resize(static_cast<std::size_t>(size)); }
    void sync() override {}
    bool hasReaders() override { return false; }

  private:
    static constexpr std::uint64_t largest = 1 << 22;

    std::vector<std::byte>& bytes_;
};

}  // namespace velk::fuzz
