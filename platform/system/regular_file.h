/// Files that can be read at any place.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <sys/stat.h>

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
    /// Why it is not open, as an errno; 0 for what is there and no regular file.
    int error() const noexcept { return error_; }
    /// Whether the path names this very file now.
    bool isAt(std::string const& path) const noexcept;
    /// What tells it from every other file, and from itself after a change.
    struct stat const& status() const noexcept {
        return status_;
    }
    /// In bytes, when it was opened; 0 for a file that is not open.
    std::uint64_t size() const noexcept { return static_cast<std::uint64_t>(status_.st_size); }
    bool contains(std::uint64_t offset, std::uint64_t size) const noexcept {
        return offset <= this->size() && size <= this->size() - offset;
    }
    /// Reads all these bytes, or answers false.
    bool read(std::uint64_t offset, void* target, std::uint64_t size) const noexcept;
    /// A structure as it stands there; nothing when the file ends before.
    template <typename Record>
    std::optional<Record> record(std::uint64_t offset) const noexcept {
        Record record;
        return read(offset, &record, sizeof record) ? std::optional(record) : std::nullopt;
    }

  private:
    int descriptor_ = -1;
    int error_ = 0;
    struct stat status_ {};
};

}  // namespace velk::platform
