#include <filesystem>
#include <fstream>

#include <sys/stat.h>

#include "path_names.h"
#include "support/mapped_volume.h"

// Paths on drives and shares that are folders here, and the system's own.

namespace {

namespace fs = std::filesystem;
using velk::test::call;
using velk::test::get;
using velk::test::MappedVolume;
using velk::test::method;
using velk::test::newPath;
using velk::test::pathOf;
using velk::test::textAt;

class MappedPaths : public velk::test::PathNames {
  protected:
    void SetUp() override {
        PathNames::SetUp();
        path_ = pathOf(newPath(""), "createTempDirectoryName", {"velk"});
        folder_ = textAt(path_, "native");
        ASSERT_EQ(folder_[0], '/');
    }
    void TearDown() override {
        path_ = nullptr;
        fs::remove_all(folder_);
        PathNames::TearDown();
    }

    void write(char const* name) { std::ofstream(fs::path(folder_) / name) << "12345"; }

    mzComPtrT<mzIUnknown> path_;
    std::string folder_;
};

TEST_F(MappedPaths, ADriveIsItsFolder) {
    MappedVolume const drive(u"M:\\", folder_);
    write("file");
    auto const file = newPath("M:\\file");
    EXPECT_EQ(call(file.iface(), "exists", get).integer(), 1);
    EXPECT_EQ(call(file.iface(), "FileSize", get).integer(), 5);
    EXPECT_EQ(textAt(file, "canonicalFilePath"), "M:/file");
    EXPECT_EQ(call(newPath("M:\\..\\..\\file").iface(), "exists", get).integer(), 1);
    EXPECT_EQ(call(newPath("M:\\missing").iface(), "exists", get).integer(), 0);
}

TEST_F(MappedPaths, LinksAreFollowedAndLeaveTheDriveWhenTheyMust) {
    MappedVolume const drive(u"M:\\", folder_);
    write("file");
    fs::create_symlink("file", fs::path(folder_) / "near");
    fs::create_symlink("/", fs::path(folder_) / "far");
    EXPECT_EQ(textAt(newPath("M:\\near"), "canonicalFilePath"), "M:/file");
    EXPECT_EQ(textAt(newPath("M:\\far"), "canonicalFilePath"), "/");
    EXPECT_EQ(textAt(pathOf(newPath("M:\\far\\usr"), "resolved"), "standard"), "/usr");
}

TEST_F(MappedPaths, LinksAreRemovedAndNotFollowed) {
    write("file");
    fs::create_directories(fs::path(folder_) / "inner");
    fs::create_directory_symlink("..", fs::path(folder_) / "inner" / "up");
    auto const inner = pathOf(path_, "plus", {"inner"});
    EXPECT_EQ(call(inner.iface(), "unlinkContents", method).integer(), 1);
    EXPECT_TRUE(fs::exists(fs::path(folder_) / "file"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(fs::path(folder_) / "inner" / "up")));
}

TEST_F(MappedPaths, AShareIsLocalWhereItIsMapped) {
    MappedVolume const share(u"\\\\server\\share\\", folder_);
    auto const path = newPath("\\\\server\\share\\a\\b");
    EXPECT_EQ(textAt(pathOf(path, "getLocalPathFromUncPath"), "native"), folder_ + "/a/b");
    MappedVolume const drive(u"M:\\", folder_);
    EXPECT_EQ(textAt(pathOf(path, "getLocalPathFromUncPath"), "native"), "M:\\a\\b");
}

TEST_F(MappedPaths, TheSystemsOwnPathsHaveBackslashesInNames) {
    write("a\\b");
    auto const file = newPath((folder_ + "/a\\b").c_str());
    EXPECT_EQ(call(file.iface(), "exists", get).integer(), 1);
    EXPECT_EQ(textAt(file, "Name"), "a\\b");
    EXPECT_EQ(textAt(newPath("/A/../b"), "absoluteFilePath"), "/b");
    EXPECT_EQ(call(newPath("/A").iface(), "isEqual", method, {"/a"}).integer(), 0);
}

TEST_F(MappedPaths, PermissionsAreThoseOfTheFile) {
    write(".file");
    auto const file = pathOf(path_, "plus", {".file"});
    EXPECT_NE(call(file.iface(), "isHidden", method).integer(), 0);
    auto const mode = [&] {
        struct stat status = {};
        EXPECT_EQ(stat((folder_ + "/.file").c_str(), &status), 0);
        return status.st_mode & 0222;
    };
    EXPECT_EQ(call(file.iface(), "setWritable", method, {false}).integer(), 1);
    EXPECT_EQ(mode(), 0U);
    EXPECT_EQ(call(file.iface(), "setWritable", method, {true}).integer(), 1);
    EXPECT_EQ(mode(), 0200U);
}

}  // namespace
