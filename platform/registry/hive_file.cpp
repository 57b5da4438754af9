#include "platform/registry/hive_file.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>

#include "platform/system/environment.h"

namespace velk::platform::registry {
namespace {

/// An absolute path in an environment variable; empty when there is none.
std::string pathVariable(char const* name) {
    char const* const value = environment(name);
    return value != nullptr && value[0] == '/' ? value : "";
}

std::string homeFolder() {
    if (auto home = pathVariable("HOME"); !home.empty()) return home;
    std::vector<char> buffer(1 << 14);
    passwd entry{};
    passwd* found = nullptr;
    getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return found != nullptr ? found->pw_dir : "";
}

/// Programs that run with more rights than their user have no user's hive: the
/// empty folder's name shows none.
std::string folderOf(HiveName name) {
    if (auto chosen = pathVariable("VELK_REGISTRY_DIR"); !chosen.empty()) return chosen;
    if (name == HiveName::machine) return "/var/lib/velkcomadapter";
    if (isPrivileged()) return "";
    auto const data = pathVariable("XDG_DATA_HOME");
    return (data.empty() ? homeFolder() + "/.local/share" : data) + "/velkcomadapter";
}

[[noreturn]] void failWithErrno() {
    switch (errno) {
        case ENOSPC:
        case EDQUOT:
            fail(ERROR_DISK_FULL);
        case ENOMEM:
            fail(ERROR_NOT_ENOUGH_MEMORY);
        case EMFILE:
        case ENFILE:
        case EIO:
            fail(ERROR_REGISTRY_IO_FAILED);
        default:
            fail(ERROR_ACCESS_DENIED);
    }
}

void require(bool success) {
    if (!success) failWithErrno();
}

bool isOwn(struct stat const& info) {
    return info.st_uid == geteuid() || info.st_uid == 0;
}

constexpr char const* noFile = "it is no regular file";

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
    require(errno == ENOENT && parent != folder);
    makeFolders(parent, mode);
    failIf(stat(parent.c_str(), &info) != 0 || !isOwn(info), ERROR_ACCESS_DENIED);
    if (mkdir(folder.c_str(), mode) != 0) return require(errno == EEXIST);
    // By its descriptor: the name may show another one by now.
    Descriptor const made(open(folder.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (fstat(made, &info) == 0 && info.st_uid == geteuid()) {
        chmod(("/proc/self/fd/" + std::to_string(made)).c_str(), mode);
    }
}

template <typename Call>
void forAll(std::span<unsigned char> bytes, Call call) {
    while (!bytes.empty()) {
        ssize_t const done = call(bytes.data(), bytes.size());
        if (done < 0 && errno == EINTR) continue;
        require(done >= 0);
        // Somebody has cut the file off meanwhile.
        failIf(done == 0, ERROR_REGISTRY_CORRUPT);
        bytes = bytes.subspan(static_cast<std::size_t>(done));
    }
}

std::string nameOfProcess(pid_t process) {
    std::string name;
    std::getline(std::ifstream("/proc/" + std::to_string(process) + "/comm"), name);
    return std::to_string(process) + (name.empty() ? "" : " (" + name + ")");
}

}  // namespace

HiveFile::HiveFile(HiveName name)
    : folder_(folderOf(name)),
      name_(name == HiveName::machine ? "machine" : "user"),
      path_(folder_ + '/' + name_ + ".db"),
      isMachine_(name == HiveName::machine) {}

std::optional<FileMark> HiveFile::mark() const noexcept {
    struct stat info;
    if (folder_.empty() || stat(path_.c_str(), &info) != 0) return std::nullopt;
    // Every change of a file changes this time, that of its rights too.
    return FileMark{info.st_dev, info.st_ino,
                    info.st_ctim.tv_sec * 1'000'000'000 + info.st_ctim.tv_nsec, info.st_size,
                    geteuid()};
}

std::pair<std::optional<HiveImage>, std::string> HiveFile::read() const {
    Descriptor const folder(open(folder_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    bool const isThere = folder >= 0;
    if (!isThere && (errno == ENOENT || errno == ENOTDIR)) return {};
    require(isThere);
    if (auto why = doubt(folder, S_IFDIR); !why.empty()) return {std::nullopt, why};
    // A pipe without a writer would be waited for otherwise.
    constexpr int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Descriptor const file(openat(folder, (name_ + ".db").c_str(), flags));
    if (file < 0 && errno == ENOENT) return {};
    if (file < 0 && (errno == ELOOP || errno == ENXIO)) return {std::nullopt, noFile};
    require(file >= 0);
    if (auto why = doubt(file, S_IFREG); !why.empty()) return {std::nullopt, why};
    struct stat info;
    require(fstat(file, &info) == 0);
    if (info.st_size == 0) return {};
    HiveImage image(static_cast<std::uint64_t>(info.st_size));
    forAll(image.bytes(), [&](void* at, std::size_t size) { return ::read(file, at, size); });
    auto const log = path_ + "-wal";
    bool const hasLog = image.hasLog() && stat(log.c_str(), &info) == 0 && info.st_size != 0;
    if (hasLog) return {imageWithLog(path_), ""};
    return {std::move(image), ""};
}

bool HiveFile::canBeReplaced() const {
    auto folder = folder_;
    struct stat info;
    while (!folder.empty() && stat(folder.c_str(), &info) != 0 && folder != "/") {
        if (errno != ENOENT) return false;
        folder = parentOf(folder);
    }
    return !folder.empty() && isOwn(info) && eaccess(folder.c_str(), W_OK | X_OK) == 0;
}

HiveFileLock::HiveFileLock(HiveFile const& file, Deadline deadline, std::string& holder)
    : file_(file),
      folder_((makeFolders(file.folder_, file.isMachine_ ? 0755 : 0700),
               open(file.folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))),
      lock_(openat(folder_, (file.name_ + ".lock").c_str(),
                   O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0600)) {
    require(lock_ >= 0);
    failIf(!doubt(folder_, S_IFDIR).empty(), ERROR_ACCESS_DENIED);
    failIf(!doubt(lock_, S_IFREG).empty(), ERROR_ACCESS_DENIED);
    // A lock of the whole process, which a forked child does not share.
    struct flock wanted {};
    wanted.l_type = F_WRLCK;
    while (fcntl(lock_, F_SETLK, &wanted) != 0) {
        require(errno == EACCES || errno == EAGAIN || errno == EINTR);
        if (std::chrono::steady_clock::now() > deadline) {
            struct flock found = wanted;
            fcntl(lock_, F_GETLK, &found);
            holder = nameOfProcess(found.l_pid);
            fail(ERROR_BUSY);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void HiveFileLock::replace(std::span<unsigned char const> content) const {
    auto const fresh = file_.name_ + ".new", name = file_.name_ + ".db";
    // What a writer that was killed has left.
    unlinkat(folder_, fresh.c_str(), 0);
    Descriptor const file(
        openat(folder_, fresh.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    require(file >= 0);
    try {
        auto* const bytes = const_cast<unsigned char*>(content.data());
        forAll({bytes, content.size()},
               [&](void const* at, std::size_t size) { return write(file, at, size); });
        require(fchmod(file, file_.isMachine_ ? 0644 : 0600) == 0 && fsync(file) == 0 &&
                renameat(folder_, fresh.c_str(), folder_, name.c_str()) == 0);
    } catch (...) {
        unlinkat(folder_, fresh.c_str(), 0);
        throw;
    }
    fsync(folder_);
    for (auto const* log : {".db-wal", ".db-shm"}) {
        unlinkat(folder_, (file_.name_ + log).c_str(), 0);
    }
}

}  // namespace velk::platform::registry
