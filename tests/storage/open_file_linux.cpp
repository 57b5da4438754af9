#include "storage/open_file.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace velk::test {

OpenFile::OpenFile(std::filesystem::path const& path)
    : file_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)) {
    EXPECT_GE(file_, 0) << path;
}

OpenFile::~OpenFile() {
    close(file_);
}

std::string OpenFile::bytes() const {
    std::string all(static_cast<std::size_t>(lseek(file_, 0, SEEK_END)), 0);
    EXPECT_EQ(pread(file_, all.data(), all.size(), 0), static_cast<ssize_t>(all.size()));
    return all;
}

void OpenFile::put(std::string const& bytes) const {
    EXPECT_EQ(pwrite(file_, bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
    EXPECT_EQ(ftruncate(file_, static_cast<off_t>(bytes.size())), 0);
}

}  // namespace velk::test
