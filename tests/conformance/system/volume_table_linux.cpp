#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velk_paths.h>
#include <windows.h>

#include "support/mapped_volume.h"

// The table of drives and shares, which only our layer has.

namespace {

using velk::test::MappedVolume;

struct FilePath {
    std::string file;
    DWORD error = ERROR_SUCCESS;
};

FilePath fileOf(OLECHAR const* path) {
    SetLastError(ERROR_SUCCESS);
    DWORD const size = VelkFileOfPath(path, nullptr, 0);
    if (size == 0) return {"", GetLastError()};
    std::vector<char> buffer(size);
    EXPECT_EQ(VelkFileOfPath(path, buffer.data(), size), size - 1);
    return {buffer.data()};
}

TEST(VolumeTable, FilesOfPaths) {
    MappedVolume const drive(u"C:\\", "/some/folder");
    MappedVolume const slash(u"D:\\", "/");
    MappedVolume const share(u"\\\\server\\share\\", "/shared/");
    struct Row {
        OLECHAR const* path;
        char const* file;
        DWORD error = ERROR_SUCCESS;
    };
    Row const rows[] = {
        {u"C:\\a\\b.doc", "/some/folder/a/b.doc"},
        {u"c:/a\\b.doc", "/some/folder/a/b.doc"},
        {u"C:", "/some/folder"},
        {u"C:\\", "/some/folder"},
        {u"C:relative", "/some/folder/relative"},
        {u"C:\\a\\..\\..\\..\\b", "/some/folder/b"},
        {u"C:\\.\\\\a\\.", "/some/folder/a"},
        {u"D:\\etc", "/etc"},
        {u"\\\\?\\C:\\a", "/some/folder/a"},
        {u"\\\\SERVER\\Share\\x", "/shared/x"},
        {u"//server/share/x", "/shared/x"},
        {u"\\\\?\\unc\\server\\share\\x", "/shared/x"},
        {u"\\\\server\\share", "/shared/"},
        {u"/usr/a\\b", "/usr/a\\b"},
        {u"a\\b/c", "a/b/c"},
        {u"///usr", "///usr"},
        {u"\u00E4\\\xDCFF", "\u00E4/\xFF"},
        {u"Q:\\x", "", ERROR_PATH_NOT_FOUND},
        {u"\\\\server\\other\\x", "", ERROR_BAD_NETPATH},
        {u"\\\\server", "", ERROR_BAD_NETPATH},
        {u"", "", ERROR_INVALID_NAME},
        {u"/half \xD800", "", ERROR_INVALID_NAME},
        {u"C:\\half \xDC00", "", ERROR_INVALID_NAME},
        {u"two halves \xDCC3\xDCA4", "", ERROR_INVALID_NAME},
        {u"/a byte \xDCE4", "/a byte \xE4"},
        {nullptr, "", ERROR_INVALID_NAME},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(&row - rows);
        auto const found = fileOf(row.path);
        EXPECT_EQ(found.file, row.file);
        EXPECT_EQ(found.error, row.error);
    }
}

TEST(VolumeTable, ATooSmallBufferStaysAsItIs) {
    char buffer[4] = "xyz";
    EXPECT_EQ(VelkFileOfPath(u"/usr", buffer, 4), 5U);
    EXPECT_STREQ(buffer, "xyz");
    EXPECT_EQ(VelkFileOfPath(u"usr", buffer, 4), 3U);
    EXPECT_STREQ(buffer, "usr");
}

TEST(VolumeTable, TheUsersEntriesComeFirst) {
    MappedVolume const machine(u"E:\\", "/machine", nullptr, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(fileOf(u"E:\\").file, "/machine");
    MappedVolume const user(u"E:\\", "/user");
    EXPECT_EQ(fileOf(u"E:\\").file, "/user");
}

TEST(VolumeTable, WhatIsMountedThereIsReported) {
    auto const report = [](std::string const& folder) {
        MappedVolume const drive(u"P:\\", folder);
        OLECHAR name[64] = {};
        GetVolumeInformationW(u"P:\\", nullptr, 0, nullptr, nullptr, nullptr, name, 64);
        return std::u16string(name);
    };
    EXPECT_TRUE(report("/proc") == u"proc");
    EXPECT_TRUE(report("/sys") == u"sysfs");
    EXPECT_TRUE(report("/no such folder").empty());
}

TEST(VolumeTable, SharesAreRemote) {
    MappedVolume const share(u"\\\\server\\share\\", "/usr");
    MappedVolume const gone(u"G:\\", "/no such folder");
    EXPECT_EQ(GetDriveTypeW(u"\\\\server\\share\\"), UINT{DRIVE_REMOTE});
    EXPECT_EQ(GetDriveTypeW(u"G:\\"), UINT{DRIVE_NO_ROOT_DIR});
}

TEST(VolumeTable, TheDriveOfAShare) {
    MappedVolume const share(u"\\\\server\\share\\", "/usr/");
    OLECHAR root[4] = {};
    EXPECT_FALSE(VelkDriveOfShare(u"\\\\server\\share\\x", root));
    MappedVolume const drive(u"K:\\", "/usr");
    ASSERT_TRUE(VelkDriveOfShare(u"\\\\server\\share\\x", root));
    EXPECT_TRUE(std::u16string(root) == u"K:\\");
    EXPECT_FALSE(VelkDriveOfShare(u"K:\\x", root));
    EXPECT_FALSE(VelkDriveOfShare(u"\\\\server\\other\\x", root));
    EXPECT_FALSE(VelkDriveOfShare(nullptr, root));
}

}  // namespace
