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

namespace fs = std::filesystem;

class TraceFile : public testing::Test {
  protected:
    TraceFile() {
        std::string pattern = (fs::temp_directory_path() / "velktraceXXXXXX").string();
        folder = mkdtemp(pattern.data());
        file = folder / "trace";
        setenv("VELK_TRACE_FILE", file.c_str(), 1);
    }
    ~TraceFile() override {
        unsetenv("VELK_TRACE_FILE");
        fs::remove_all(folder);
    }
    static void log() { StaticLogger().log(7, "unit.cpp", "f", 3, "said"); }
    static std::string contentOf(fs::path const& path) {
        std::stringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    fs::path folder, file;
};

TEST_F(TraceFile, IsMadeForItsOwnerAlone) {
    std::string const line = "7 unit.cpp:3 f: said\n";
    mode_t const before = umask(0);
    log();
    umask(before);
    EXPECT_EQ(contentOf(file), line);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
    fs::permissions(file, fs::perms(0640));
    log();
    EXPECT_EQ(contentOf(file), line + line);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640)) << "was there before";
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
    std::ofstream(folder / "other") << "kept";
    for (char const* target : {"other", "missing"}) {
        fs::create_symlink(folder / target, file);
        log();
        fs::remove(file);
    }
    EXPECT_EQ(contentOf(folder / "other"), "kept");
    EXPECT_FALSE(fs::exists(folder / "missing"));
}

}  // namespace
