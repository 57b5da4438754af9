#include "platform/storage/compound/disk_file.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/system/boundary.h"
#include "platform/system/live_counts.h"

namespace velk::platform::storage {
namespace {

// Bytes that no file reaches; a lock on one says what its holder does. They
// are the last that a file offset can name.
constexpr off_t lockBase = 0x7FFFFFFFFFFFFF00;
enum LockByte : off_t {
    opening = lockBase,
    reading = lockBase + 1,
    writing = lockBase + 2,
    readingDenied = lockBase + 3,
    writingDenied = lockBase + 4
};

HRESULT resultOf(int error) {
    switch (error) {
        case ENOENT:
            return STG_E_FILENOTFOUND;
        case ENOTDIR:
        case ENAMETOOLONG:
            return STG_E_PATHNOTFOUND;
        case EEXIST:
            return STG_E_FILEALREADYEXISTS;
        case EMFILE:
        case ENFILE:
            return STG_E_TOOMANYOPENFILES;
        case ENOMEM:
            return STG_E_INSUFFICIENTMEMORY;
        default:
            return STG_E_ACCESSDENIED;
    }
}

HRESULT resultOfWrite(int error) {
    return error == ENOSPC || error == EDQUOT || error == EFBIG ? STG_E_MEDIUMFULL
                                                                : STG_E_WRITEFAULT;
}

struct flock oneByte(short type, LockByte byte) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = byte;
    lock.l_len = 1;
    return lock;
}

bool tryLock(int file, short type, LockByte byte) {
    auto lock = oneByte(type, byte);
    return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

/// Whether another handle holds a lock on the byte.
bool isHeldByOthers(int file, LockByte byte) {
    auto lock = oneByte(F_WRLCK, byte);
    require(fcntl(file, F_OFD_GETLK, &lock) == 0, STG_E_LOCKVIOLATION);
    return lock.l_type != F_UNLCK;
}

/// Keeps others from opening the file for as long as this one is opening it.
/// Handles that only read cannot, and need not: each announces itself before
/// it looks at the others, so that of two that exclude each other one sees it.
class OpeningTurn {
  public:
    OpeningTurn(int file, bool writes) : file_(file), isHeld_(writes) {
        constexpr std::chrono::milliseconds patience{2000}, pause{1};
        for (auto waited = pause; isHeld_ && !tryLock(file_, F_WRLCK, opening); waited += pause) {
            require(waited <= patience, STG_E_LOCKVIOLATION);
            std::this_thread::sleep_for(pause);
        }
    }
    OpeningTurn(OpeningTurn const&) = delete;
    OpeningTurn& operator=(OpeningTurn const&) = delete;
    ~OpeningTurn() {
        if (isHeld_) tryLock(file_, F_UNLCK, opening);
    }

  private:
    int file_;
    bool isHeld_;
};

}  // namespace

DiskFile::DiskFile(std::string const& path, Disposition disposition, Sharing sharing)
    : path_(path) {
    open(disposition, sharing.writes);
    try {
        struct stat info {};
        require(fstat(file_, &info) == 0 && S_ISREG(info.st_mode), STG_E_ACCESSDENIED);
        share(sharing);
        if (disposition == Disposition::createAlways) {
            require(ftruncate(file_, 0) == 0, STG_E_ACCESSDENIED);
        }
    } catch (...) {
        close(file_);
        throw;
    }
    countLive(VELK_LIVE_COMPOUND_FILE, 1);
}

DiskFile::~DiskFile() {
    if (removeOnClose_) unlink(path_.c_str());
    close(file_);
    countLive(VELK_LIVE_COMPOUND_FILE, -1);
}

void DiskFile::open(Disposition disposition, bool writes) {
    // A pipe must not block the opening.
    int flags = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (writes ? O_RDWR : O_RDONLY);
    if (disposition != Disposition::open) flags |= O_CREAT;
    if (disposition == Disposition::createNew) flags |= O_EXCL;
    constexpr mode_t everyone = 0666;
    do {
        file_ = ::open(path_.c_str(), flags, everyone);
    } while (file_ < 0 && errno == EINTR);
    require(file_ >= 0, resultOf(errno));
}

void DiskFile::share(Sharing sharing) {
    OpeningTurn const turn(file_, sharing.writes);
    struct Claim {
        bool isMade;
        LockByte byte;
        LockByte excludedBy;
    };
    // Two writers would take the same free sectors, whatever they permit.
    require(!sharing.writes || !isHeldByOthers(file_, writing), STG_E_SHAREVIOLATION);
    for (auto const& claim : {Claim{sharing.reads, reading, readingDenied},
                              Claim{sharing.writes, writing, writingDenied},
                              Claim{sharing.deniesReading, readingDenied, reading},
                              Claim{sharing.deniesWriting, writingDenied, writing}}) {
        if (!claim.isMade) continue;
        require(tryLock(file_, F_RDLCK, claim.byte), STG_E_LOCKVIOLATION);
        require(!isHeldByOthers(file_, claim.excludedBy), STG_E_SHAREVIOLATION);
    }
}

std::uint64_t DiskFile::size() {
    struct stat info {};
    require(fstat(file_, &info) == 0, STG_E_READFAULT);
    return static_cast<std::uint64_t>(info.st_size);
}

void DiskFile::read(std::uint64_t offset, MutableBytes target) {
    while (!target.empty()) {
        ssize_t const got = pread(file_, target.data(), target.size(), static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) continue;
        require(got >= 0, STG_E_READFAULT);
        if (got == 0) {
            std::fill(target.begin(), target.end(), std::byte{0});
            return;
        }
        target = target.subspan(static_cast<std::size_t>(got));
        offset += static_cast<std::uint64_t>(got);
    }
}

void DiskFile::write(std::uint64_t offset, Bytes source) {
    while (!source.empty()) {
        ssize_t const put = pwrite(file_, source.data(), source.size(), static_cast<off_t>(offset));
        if (put < 0 && errno == EINTR) continue;
        require(put > 0, put < 0 ? resultOfWrite(errno) : STG_E_WRITEFAULT);
        source = source.subspan(static_cast<std::size_t>(put));
        offset += static_cast<std::uint64_t>(put);
    }
}

void DiskFile::truncate(std::uint64_t size) {
    int const result = ftruncate(file_, static_cast<off_t>(size));
    require(result == 0, resultOfWrite(errno));
}

void DiskFile::sync() {
    int const result = fdatasync(file_);
    require(result == 0, resultOfWrite(errno));
}

bool DiskFile::hasReaders() {
    return isHeldByOthers(file_, reading);
}

}  // namespace velk::platform::storage
