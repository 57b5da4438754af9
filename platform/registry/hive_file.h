/// The file of a hive: where it stands, whom it is believed, and how it is
/// replaced by another.
///
/// What is believed is a regular file, not reached through a link, in a folder;
/// both belong to the effective user or to root, and neither group nor others
/// may write to them.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include <unistd.h>

#include "platform/registry/hive_database.h"

namespace velk::platform::registry {

enum class HiveName { user, machine };

class Descriptor {
  public:
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    operator int() const noexcept { return number_; }

  private:
    int number_;
};

/// Tells whether the name still shows the same file to the same user.
struct FileMark {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t changed = 0;
    std::int64_t size = 0;
    unsigned user = 0;
    bool operator==(FileMark const&) const = default;
};

class HiveFile {
  public:
    explicit HiveFile(HiveName name);

    std::string const& path() const { return path_; }
    /// Nothing when no file shows.
    std::optional<FileMark> mark() const noexcept;

    /// The content, or nothing where there is none: no file, an empty one, or
    /// one that is not believed. Then the second has the reason, which is empty
    /// otherwise. Fails for a file that cannot be read.
    std::pair<std::optional<HiveImage>, std::string> read() const;

    /// Whether the rights of the folder, or of the one that it is to be made in,
    /// permit a change.
    bool canBeReplaced() const;

  private:
    friend class HiveFileLock;

    std::string const folder_;
    std::string const name_;
    std::string const path_;
    bool const isMachine_;
};

/// The turn of one writer among all processes, given back by the end of this or
/// of the process. A process takes one turn at a file at a time.
class HiveFileLock {
  public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Makes the folder where it is missing, and waits. After the deadline fails
    /// with ERROR_BUSY, and `holder` tells who has the turn.
    HiveFileLock(HiveFile const& file, Deadline deadline, std::string& holder);

    /// Puts a file with this content in the place of the former one. When it
    /// fails the former one is there, whole.
    void replace(std::span<unsigned char const> content) const;

  private:
    HiveFile const& file_;
    Descriptor folder_;
    Descriptor lock_;
};

}  // namespace velk::platform::registry
