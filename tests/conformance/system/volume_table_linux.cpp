/// The table of drives and shares, which only our layer has.
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <velk_paths.h>
#include <windows.h>

#include "support/data_table.h"
#include "support/mapped_volume.h"

namespace {

using velk::test::DataRow;
using velk::test::MappedVolume;

std::string fileOf(OLECHAR const* path) {
    SetLastError(ERROR_SUCCESS);
    DWORD const size = VelkFileOfPath(path, nullptr, 0);
    if (size == 0) return "error " + std::to_string(GetLastError());
    std::vector<char> buffer(size);
    EXPECT_EQ(VelkFileOfPath(path, buffer.data(), size), size - 1);
    return buffer.data();
}

/// UTF-16 in which `%DCE4` is that unit.
std::u16string unitsOf(std::string const& cell) {
    auto units = std::filesystem::path(cell).u16string();
    for (auto at = units.find(u'%'); at != units.npos; at = units.find(u'%', at + 1)) {
        auto const digits = units.substr(at + 1, 4);
        auto const unit = std::stoul(std::string(digits.begin(), digits.end()), nullptr, 16);
        units.replace(at, 5, 1, static_cast<char16_t>(unit));
    }
    return units;
}

TEST(VolumeTable, LeadsToFiles) {
    MappedVolume const drive(u"C:\\", "/some/folder");
    MappedVolume const slash(u"D:\\", "/");
    MappedVolume const share(u"\\\\server\\share\\", "/shared/");
    velk::test::expectTable("system/paths.tsv", [](DataRow const& row) {
        auto const file = fileOf(unitsOf(row["path"]).c_str());
        std::string text;
        // Bytes that are no UTF-8 are told in the same way.
        for (std::size_t at = 0; at < file.size(); ++at) {
            bool const isByte = (file[at] == '\xE4' || file[at] == '\xFF') &&
                                (at + 1 == file.size() || file[at + 1] == '/');
            text += isByte ? (file[at] == '\xE4' ? "%E4" : "%FF") : std::string(1, file[at]);
        }
        return text;
    });
    EXPECT_EQ(fileOf(nullptr), "error " + std::to_string(ERROR_INVALID_NAME));
    char buffer[4] = "xyz";
    EXPECT_EQ(VelkFileOfPath(u"/usr", buffer, 4), 5U);
    EXPECT_STREQ(buffer, "xyz") << "with too little room";
    EXPECT_EQ(VelkFileOfPath(u"usr", buffer, 4), 3U);
    EXPECT_STREQ(buffer, "usr");
}

TEST(VolumeTable, TheUsersEntriesComeFirst) {
    MappedVolume const machine(u"E:\\", "/machine", nullptr, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(fileOf(u"E:\\"), "/machine");
    MappedVolume const user(u"E:\\", "/user");
    EXPECT_EQ(fileOf(u"E:\\"), "/user");
}

TEST(VolumeTable, WhatIsMountedThereIsReported) {
    auto const report = [](std::string const& folder) {
        MappedVolume const drive(u"P:\\", folder);
        OLECHAR name[64] = {};
        GetVolumeInformationW(u"P:\\", nullptr, 0, nullptr, nullptr, nullptr, name, 64);
        return std::filesystem::path(name).string();
    };
    EXPECT_EQ(report("/proc"), "proc");
    EXPECT_EQ(report("/sys"), "sysfs");
    EXPECT_EQ(report("/no such folder"), "");
}

TEST(VolumeTable, TheDriveOfAShare) {
    MappedVolume const share(u"\\\\server\\share\\", "/usr/");
    OLECHAR root[4] = {};
    EXPECT_FALSE(VelkDriveOfShare(u"\\\\server\\share\\x", root));
    MappedVolume const drive(u"K:\\", "/usr");
    ASSERT_TRUE(VelkDriveOfShare(u"\\\\server\\share\\x", root));
    EXPECT_EQ(std::u16string(root), u"K:\\");
    for (auto const* none : {u"K:\\x", u"\\\\server\\other\\x", (char16_t const*)nullptr}) {
        EXPECT_FALSE(VelkDriveOfShare(none, root));
    }
}

}  // namespace
