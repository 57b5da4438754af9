#include "platform/system/regular_file.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace velk::platform {

RegularFile::RegularFile(std::string const& path) noexcept
    // A pipe without a writer would be waited for otherwise.
    : descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {
    if (descriptor_ < 0) {
        error_ = errno;
        return;
    }
    if (fstat(descriptor_, &status_) == 0 && S_ISREG(status_.st_mode)) return;
    close(descriptor_);
    descriptor_ = -1;
    status_ = {};
}

RegularFile::~RegularFile() {
    if (descriptor_ >= 0) close(descriptor_);
}

bool RegularFile::read(std::uint64_t offset, void* target, std::uint64_t size) const noexcept {
    if (!contains(offset, size)) return false;
    auto* bytes = static_cast<char*>(target);
    while (size > 0) {
        auto const count = pread(descriptor_, bytes, size, static_cast<off_t>(offset));
        if (count < 0 && errno == EINTR) continue;
        // Somebody may have cut the file off since.
        if (count <= 0) return false;
        auto const done = static_cast<std::uint64_t>(count);
        bytes += done;
        offset += done;
        size -= done;
    }
    return true;
}

bool RegularFile::isAt(std::string const& path) const noexcept {
    struct stat now;
    return stat(path.c_str(), &now) == 0 && now.st_dev == status_.st_dev &&
           now.st_ino == status_.st_ino;
}

}  // namespace velk::platform
