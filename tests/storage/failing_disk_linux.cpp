#include "storage/failing_disk.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include <sys/syscall.h>
#include <unistd.h>

// The calls that move bytes of files, for the whole process, with a word of the
// test's own in them.

namespace velk::test {
namespace {

DiskFault present;
bool hasFailed = false, isShortening = false;
long turn = 0, shortened = 0;

bool isToFail(DiskCall call) {
    if (present.call != call || present.before-- > 0) return false;
    int const error = present.error;
    present.isLasting ? void(present.before = 0) : void(present.call = DiskCall::none);
    hasFailed = true;
    errno = error;
    return true;
}

/// How many of the bytes are moved; none when the call is interrupted.
std::size_t share(std::size_t size) {
    if (!isShortening) return size;
    ++shortened;
    if (++turn % 3 == 0) {
        errno = EINTR;
        return 0;
    }
    return std::min<std::size_t>(size, 1 + static_cast<std::size_t>(turn) * 37 % 300);
}

template <typename Buffer>
ssize_t transfer(DiskCall call, long number, int file, Buffer* bytes, std::size_t size,
                 off64_t offset) {
    if (isToFail(call)) return -1;
    std::size_t const moved = share(size);
    if (moved == 0 && size != 0) return -1;
    return syscall(number, file, bytes, moved, offset);
}

}  // namespace

void failDisk(DiskFault fault) {
    hasFailed = false;
    present = fault;
}

bool endFailingDisk() {
    present = {};
    return hasFailed;
}

void shortenTransfers(bool isOn) {
    isShortening = isOn;
    shortened = 0;
}

long shortTransfers() {
    return shortened;
}

}  // namespace velk::test

using namespace velk::test;

extern "C" {

ssize_t pread(int file, void* bytes, std::size_t size, off_t offset) {
    return transfer(DiskCall::read, SYS_pread64, file, bytes, size, offset);
}

ssize_t pread64(int file, void* bytes, std::size_t size, off64_t offset) {
    return transfer(DiskCall::read, SYS_pread64, file, bytes, size, offset);
}

ssize_t pwrite(int file, void const* bytes, std::size_t size, off_t offset) {
    return transfer(DiskCall::write, SYS_pwrite64, file, bytes, size, offset);
}

ssize_t pwrite64(int file, void const* bytes, std::size_t size, off64_t offset) {
    return transfer(DiskCall::write, SYS_pwrite64, file, bytes, size, offset);
}

int fdatasync(int file) {
    return isToFail(DiskCall::sync) ? -1 : static_cast<int>(syscall(SYS_fdatasync, file));
}
}
