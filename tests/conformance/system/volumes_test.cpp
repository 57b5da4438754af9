/// What programs can ask about volumes, and of which files their paths are.
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/data_table.h"
#include "support/volumes.h"

namespace {

using namespace velk::test;
using Text = std::basic_string<OLECHAR>;

struct Volumes : testing::Test {
    DriveC const drive;
};

/// What GetVolumeInformationW gives, asked for as much as there is room.
std::string told(OLECHAR const* root, DWORD room) {
    OLECHAR label[64] = {OLESTR('x')}, name[64] = {OLESTR('x')};
    DWORD serial = 0, longest = 0, flags = 0;
    SetLastError(ERROR_SUCCESS);
    if (!GetVolumeInformationW(root, label, 64, &serial, &longest, &flags, name, room)) {
        EXPECT_EQ(name[0], OLESTR('x'));
        return "error " + std::to_string(GetLastError());
    }
    std::ostringstream text;
    text << std::string(name, name + Text(name).size()) << ' ' << longest;
    if ((flags & FILE_CASE_PRESERVED_NAMES) != 0) text << " keeps case";
    if ((flags & FILE_READ_ONLY_VOLUME) != 0) text << " read-only";
    return text.str() + (label[0] == 0 ? "" : " labelled");
}

TEST_F(Volumes, TellWhatTheyAre) {
    expectTable("system/volumes.tsv", [](DataRow const& row) {
        Text const root(row["root"].begin(), row["root"].end());
        return told(root.c_str(), static_cast<DWORD>(std::stoul(row["room"])));
    });
    EXPECT_FALSE(told(nullptr, 64).starts_with("error ")) << "of the current folder";
    EXPECT_TRUE(
        GetVolumeInformationW(OLESTR("C:\\"), nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0));
}

}  // namespace
