#include "platform/system/owned_file.h"

#include <cerrno>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>

namespace velk::platform {
namespace {

constexpr char const* noFile = "it is no regular file";

void require(bool success, int number) {
    if (!success) throw SystemFailure{number};
}

/// After a call of the system.
void require(bool success) {
    if (!success) throw SystemFailure{errno};
}

bool isOwn(struct stat const& info) {
    return info.st_uid == geteuid() || info.st_uid == 0;
}

/// Why what is open here is not believed; empty when it is.
std::string doubt(int descriptor, mode_t kind) {
    std::string const what = kind == S_IFDIR ? "its folder " : "it ";
    struct stat info;
    require(fstat(descriptor, &info) == 0);
    if ((info.st_mode & S_IFMT) != kind) return noFile;
    if (!isOwn(info)) return what + "belongs to user " + std::to_string(info.st_uid);
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) == 0) return {};
    return what + "can be written to by others";
}

std::string parentOf(std::string const& folder) {
    auto const end = folder.find_last_of('/');
    return end == 0 || end == std::string::npos ? "/" : folder.substr(0, end);
}

/// Makes a folder and those above it, only in one that is the user's or root's.
/// What is made has this mode, whatever the process's mask.
void makeFolders(std::string const& folder, mode_t mode) {
    struct stat info;
    if (stat(folder.c_str(), &info) == 0) return;
    auto const parent = parentOf(folder);
    require(errno == ENOENT);
    require(!folder.empty() && parent != folder, ENOENT);
    makeFolders(parent, mode);
    require(stat(parent.c_str(), &info) == 0 && isOwn(info), EACCES);
    if (mkdir(folder.c_str(), mode) != 0) return require(errno == EEXIST);
    // By its descriptor: the name may show another one by now.
    Descriptor const made(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (fstat(made, &info) == 0 && info.st_uid == geteuid()) {
        chmod(("/proc/self/fd/" + std::to_string(made)).c_str(), mode);
    }
}

void writeAll(int file, std::span<unsigned char const> bytes) {
    while (!bytes.empty()) {
        ssize_t const done = write(file, bytes.data(), bytes.size());
        if (done < 0 && errno == EINTR) continue;
        require(done >= 0);
        bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
}

std::string nameOfProcess(pid_t process) {
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
    return std::to_string(process) + (name.empty() ? "" : " (" + name + ")");
}

}  // namespace

std::optional<FileMark> OwnedFile::mark() const noexcept {
    struct stat info;
    if (folder_.empty() || stat(path_.c_str(), &info) != 0) return std::nullopt;
    // Every change of a file changes this time, that of its rights too.
    return FileMark{info.st_dev, info.st_ino,
                    info.st_ctim.tv_sec * 1'000'000'000 + info.st_ctim.tv_nsec, info.st_size,
                    geteuid()};
}

std::pair<Descriptor, std::string> OwnedFile::open() const {
    Descriptor const folder(::open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (folder < 0) {
        require(errno == ENOENT || errno == ENOTDIR);
        return {Descriptor(-1), ""};
    }
    if (auto why = doubt(folder, S_IFDIR); !why.empty()) return {Descriptor(-1), why};
    // A pipe without a writer would be waited for otherwise.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor file(openat(folder, name_.c_str(), flags));
    if (file < 0) {
        require(errno == ENOENT || errno == ELOOP || errno == ENXIO);
        return {Descriptor(-1), errno == ENOENT ? "" : noFile};
    }
    if (auto why = doubt(file, S_IFREG); !why.empty()) return {Descriptor(-1), why};
    return {std::move(file), ""};
}

bool OwnedFile::canBeReplaced() const {
    auto folder = folder_;
    struct stat info {};
    while (!folder.empty() && stat(folder.c_str(), &info) != 0) {
        if (errno != ENOENT || folder == "/") return false;
        folder = parentOf(folder);
    }
    return !folder.empty() && isOwn(info) && eaccess(folder.c_str(), W_OK | X_OK) == 0;
}

std::uint64_t sizeOf(Descriptor const& file) {
    struct stat info;
    require(fstat(file, &info) == 0);
    return static_cast<std::uint64_t>(info.st_size);
}

void readAll(Descriptor const& file, std::span<unsigned char> target) {
    while (!target.empty()) {
        ssize_t const done = read(file, target.data(), target.size());
        if (done < 0 && errno == EINTR) continue;
        require(done >= 0);
        require(done != 0, ENODATA);
        target = target.subspan(static_cast<std::size_t>(done));
    }
}

OwnedFileTurn::OwnedFileTurn(OwnedFile const& file, Deadline deadline, std::string& holder)
    : file_(file),
      folder_((makeFolders(file.folder_, file.folderMode_),
               ::open(file.folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))),
      lock_(openat(folder_, (file.name_ + ".lock").c_str(),
                   O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600)) {
    require(lock_ >= 0);
    require(doubt(folder_, S_IFDIR).empty() && doubt(lock_, S_IFREG).empty(), EACCES);
    // First the place of the next one, so that who has just had the turn cannot
    // take it again before those who wait.
    constexpr off_t turn = 0, next = 1;
    take(next, F_WRLCK, deadline, holder);
    take(turn, F_WRLCK, deadline, holder);
    take(next, F_UNLCK, deadline, holder);
}

void OwnedFileTurn::take(off_t byte, short kind, Deadline deadline, std::string& holder) const {
    struct flock wanted {};
    wanted.l_type = kind;
    wanted.l_start = byte;
    wanted.l_len = 1;
    bool const isOurs = tryUntil(deadline, [&] {
        if (fcntl(lock_, F_SETLK, &wanted) == 0) return true;
        require(errno == EACCES || errno == EAGAIN || errno == EINTR);
        return false;
    });
    if (isOurs) return;
    struct flock found = wanted;
    found.l_start = 0;
    fcntl(lock_, F_GETLK, &found);
    holder = nameOfProcess(found.l_pid);
    throw SystemFailure{EBUSY};
}

void OwnedFileTurn::replace(std::span<unsigned char const> content,
                            std::span<char const* const> endings) const {
    auto const fresh = file_.name_ + ".new";
    // What a writer that was killed has left.
    unlinkat(folder_, fresh.c_str(), 0);
    Descriptor const file(
        openat(folder_, fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    require(file >= 0);
    try {
        writeAll(file, content);
        require(fchmod(file, file_.mode_) == 0 && fsync(file) == 0 &&
                renameat(folder_, fresh.c_str(), folder_, file_.name_.c_str()) == 0);
    } catch (SystemFailure const&) {
        unlinkat(folder_, fresh.c_str(), 0);
        throw;
    }
    fsync(folder_);
    for (auto const* ending : endings) unlinkat(folder_, (file_.name_ + ending).c_str(), 0);
}

}  // namespace velk::platform
