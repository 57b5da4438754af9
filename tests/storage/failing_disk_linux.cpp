#include "storage/failing_disk.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

// The calls that move bytes of files, for the whole process, with a word of the
// test's own in them.

namespace velk::test {
namespace {

DiskFault present;
bool hasFailed = false, isShortening = false, isRecording = false;
long turn = 0, shortened = 0;
std::vector<DiskStep> steps;

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

/// A full medium takes what lengthens no file.
bool needsRoom(int file, std::size_t size, off64_t offset) {
    struct stat info {};
    return fstat(file, &info) != 0 || offset + static_cast<off64_t>(size) > info.st_size;
}

template <typename Buffer>
ssize_t transfer(DiskCall call, long number, int file, Buffer* bytes, std::size_t size,
                 off64_t offset) {
    bool const mayFail = present.error != ENOSPC || needsRoom(file, size, offset);
    if (mayFail && isToFail(call)) {
        // What fails may have reached the medium in part, but for a header,
        // which is one piece.
        int const error = errno;
        if (call == DiskCall::write && offset != 0) syscall(number, file, bytes, size / 2, offset);
        errno = error;
        return -1;
    }
    if (call == DiskCall::write && isRecording) {
        steps.push_back(
            {static_cast<std::size_t>(offset), {static_cast<char const*>(bytes), size}});
    }
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

void recordDisk() {
    steps.clear();
    isRecording = true;
}

std::vector<DiskStep> recordedSteps() {
    isRecording = false;
    return std::move(steps);
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
    if (isRecording) steps.emplace_back();
    return isToFail(DiskCall::sync) || fcntl(file, F_GETFD) < 0 ? -1 : 0;
}
}
