/// The seam between compound files and what they are stored in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace velk::platform::storage {

using Bytes = std::span<std::byte const>;
using MutableBytes = std::span<std::byte>;

/// A file as compound files need it. Every member fails with a Failure.
class FileAccess {
  public:
    virtual ~FileAccess() = default;

    virtual std::uint64_t size() = 0;

    /// Reads from `offset` on. What lies beyond the end of the file is zero.
    virtual void read(std::uint64_t offset, MutableBytes target) = 0;

    /// Writes all of `source`, and lengthens the file where it ends before.
    virtual void write(std::uint64_t offset, Bytes source) = 0;

    /// Cuts what stands behind `size`.
    virtual void truncate(std::uint64_t size) = 0;

    /// Returns when all that was written is on the medium.
    virtual void sync() = 0;

    /// Whether others have the file open, who may be reading what the last
    /// commit has given up.
    virtual bool hasReaders() = 0;
};

}  // namespace velk::platform::storage
