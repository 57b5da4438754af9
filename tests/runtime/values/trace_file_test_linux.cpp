/// What VELK_TRACE_FILE may name: regular files, and nothing that is waited for.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/logger.h"

namespace {

namespace files = std::filesystem;

std::string contentOf(files::path const& path) {
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

class TraceFile : public testing::Test {
  protected:
    TraceFile() {
        std::string pattern = (files::temp_directory_path() / "velktraceXXXXXX").string();
        folder = mkdtemp(pattern.data());
        file = folder / "trace";
        setenv("VELK_TRACE_FILE", file.c_str(), 1);
    }
    ~TraceFile() override {
        unsetenv("VELK_TRACE_FILE");
        files::remove_all(folder);
    }
    static void log() { StaticLogger().log(7, "unit.cpp", "f", 3, "said"); }

    files::path folder, file;
};

constexpr auto const* line = "7 unit.cpp:3 f: said\n";

TEST_F(TraceFile, IsMadeForItsOwnerAlone) {
    mode_t const before = umask(0);
    log();
    umask(before);
    EXPECT_EQ(contentOf(file), line);
    EXPECT_EQ(files::status(file).permissions(), files::perms(0600));
    files::permissions(file, files::perms(0640));
    log();
    EXPECT_EQ(contentOf(file), std::string(line) + line);
    EXPECT_EQ(files::status(file).permissions(), files::perms(0640)) << "was there before";
}

TEST_F(TraceFile, IsNoPipe) {
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    // A host that waits for a reader is ended by this.
    alarm(20);
    log();
    int const reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
    log();
    alarm(0);
    char byte;
    EXPECT_EQ(read(reader, &byte, 1), 0) << "something was written";
    close(reader);
}

TEST_F(TraceFile, IsNoLink) {
    auto const other = folder / "other";
    std::ofstream(other) << "kept";
    files::create_symlink(other, file);
    log();
    EXPECT_EQ(contentOf(other), "kept");
    files::remove(file);
    files::create_symlink(folder / "missing", file);
    log();
    EXPECT_FALSE(files::exists(folder / "missing"));
}

}  // namespace
