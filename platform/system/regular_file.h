/// Files that can be read at any place.
#pragma once

#include <cstdint>
#include <string>

namespace velk::platform {

/// A regular file, open to be read. Folders, pipes and devices are none, and
/// are not waited for. Needs no memory.
class RegularFile {
  public:
    /// `path` is in the system's bytes.
    explicit RegularFile(std::string const& path) noexcept;
    RegularFile(RegularFile const&) = delete;
    RegularFile& operator=(RegularFile const&) = delete;
    ~RegularFile();

    bool isOpen() const noexcept { return descriptor_ >= 0; }
    /// In bytes, when it was opened; 0 for a file that is not open.
    std::uint64_t size() const noexcept { return size_; }
    bool contains(std::uint64_t offset, std::uint64_t size) const noexcept {
        return offset <= size_ && size <= size_ - offset;
    }
    /// Reads all these bytes, or answers false.
    bool read(std::uint64_t offset, void* target, std::uint64_t size) const noexcept;

  private:
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
};

/// Whether there is something of this path that is no regular file.
bool isOtherThanRegularFile(std::string const& path) noexcept;

}  // namespace velk::platform
