/// Files that one user and root alone may change, and that are only ever replaced
/// whole.
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
#include <thread>
#include <utility>

#include <sys/types.h>
#include <unistd.h>

namespace velk::platform {

/// A call of the system that failed, with its error number.
struct SystemFailure {
    int number;
};

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

/// Tells whether a name still shows the same file to the same user.
struct FileMark {
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t changed = 0;
    std::int64_t size = 0;
    unsigned user = 0;
    bool operator==(FileMark const&) const = default;
};

/// A file's name, and how it is made. Functions throw SystemFailure.
class OwnedFile {
  public:
    /// An empty folder has no files, and none can be made there.
    OwnedFile(std::string folder, std::string name, mode_t mode, mode_t folderMode)
        : folder_(std::move(folder)),
          name_(std::move(name)),
          path_(folder_ + '/' + name_),
          mode_(mode),
          folderMode_(folderMode) {}

    std::string const& path() const { return path_; }
    /// Nothing when no file shows.
    std::optional<FileMark> mark() const noexcept;

    /// The file to be read, or a negative descriptor when there is none, or it
    /// is not believed. Then the text says why; it is empty otherwise.
    std::pair<Descriptor, std::string> open() const;

    /// Whether the rights of the folder, or of the one that it is to be made in,
    /// permit a change.
    bool canBeReplaced() const;

  private:
    friend class OwnedFileTurn;

    std::string const folder_;
    std::string const name_;
    std::string const path_;
    mode_t const mode_;
    mode_t const folderMode_;
};

std::uint64_t sizeOf(Descriptor const& file);
/// Fails with ENODATA when the file ends before.
void readAll(Descriptor const& file, std::span<unsigned char> target);

/// Tries once a millisecond until `attempt` gives true; false when it has not by
/// the deadline.
template <typename Attempt>
bool tryUntil(std::chrono::steady_clock::time_point deadline, Attempt attempt) {
    while (!attempt()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// The turn of one writer among all processes, given back by the end of this or
/// of the process; a forked child has no part in it. A process takes one turn at
/// a file at a time.
class OwnedFileTurn {
  public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// Makes the folder where it is missing, and waits. After the deadline fails
    /// with EBUSY, and `holder` tells which process has the turn.
    OwnedFileTurn(OwnedFile const& file, Deadline deadline, std::string& holder);

    /// Puts a file with this content in the place of the former one. When it
    /// fails the former one is there, whole. Takes what else a former version
    /// kept beside it away: files that have its name and one of these endings.
    void replace(std::span<unsigned char const> content,
                 std::span<char const* const> endings) const;

  private:
    void take(off_t byte, short kind, Deadline deadline, std::string& holder) const;

    OwnedFile const& file_;
    Descriptor folder_;
    Descriptor lock_;
};

}  // namespace velk::platform
