#include <string>

#include <gtest/gtest.h>

#include <windows.h>

#include "support/expected_difference.h"
#include "support/volumes.h"

// What programs can ask about a volume.

namespace {

using velk::test::expectDifference;
using velk::test::System;
using Text = std::basic_string<OLECHAR>;

class Volumes : public testing::Test {
    velk::test::DriveC drive_;
};

Text fileSystemAt(OLECHAR const* root) {
    OLECHAR name[20] = {};
    GetVolumeInformationW(root, nullptr, 0xFFFFFFFF, nullptr, nullptr, nullptr, name, 20);
    return name;
}

DWORD errorAt(OLECHAR const* root) {
    OLECHAR name[20] = {};
    SetLastError(ERROR_SUCCESS);
    BOOL const known = GetVolumeInformationW(root, nullptr, 0, nullptr, nullptr, nullptr, name, 20);
    EXPECT_FALSE(known);
    EXPECT_EQ(name[0], 0);
    return GetLastError();
}

TEST_F(Volumes, TellTheirFileSystem) {
    for (OLECHAR const* root :
         {OLESTR("C:\\"), OLESTR("c:\\"), OLESTR("C:/"), OLESTR("\\\\?\\C:\\")}) {
        EXPECT_TRUE(fileSystemAt(root) == OLESTR("NTFS"));
    }
}

TEST_F(Volumes, TellWhatNamesTheyTake) {
    OLECHAR label[64] = {OLESTR('x')};
    DWORD serial = 0, longest = 0, flags = 0;
    ASSERT_TRUE(
        GetVolumeInformationW(OLESTR("C:\\"), label, 64, &serial, &longest, &flags, nullptr, 0));
    EXPECT_EQ(longest, 255U);
    EXPECT_NE(flags & FILE_CASE_PRESERVED_NAMES, 0U);
    EXPECT_EQ(flags & FILE_READ_ONLY_VOLUME, 0U);
    EXPECT_EQ(label[0], 0);
}

TEST_F(Volumes, NeedNothingToWriteTo) {
    EXPECT_TRUE(
        GetVolumeInformationW(OLESTR("C:\\"), nullptr, 0, nullptr, nullptr, nullptr, nullptr, 0));
}

TEST_F(Volumes, AnswerForTheCurrentDirectory) {
    EXPECT_FALSE(fileSystemAt(nullptr).empty());
}

TEST_F(Volumes, WantRoomForTheWholeName) {
    for (DWORD room = 0; room < 5; ++room) {
        OLECHAR name[20] = {OLESTR('x')};
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(GetVolumeInformationW(OLESTR("C:\\"), nullptr, 0, nullptr, nullptr, nullptr,
                                           name, room));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_LENGTH});
        EXPECT_EQ(name[0], OLESTR('x'));
    }
    OLECHAR name[5] = {};
    EXPECT_TRUE(
        GetVolumeInformationW(OLESTR("C:\\"), nullptr, 0, nullptr, nullptr, nullptr, name, 5));
}

TEST_F(Volumes, ThatAreNotThere) {
    EXPECT_EQ(errorAt(OLESTR("Q:\\")), DWORD{ERROR_PATH_NOT_FOUND});
    EXPECT_EQ(errorAt(OLESTR("C:\\windows\\")), DWORD{ERROR_DIR_NOT_ROOT});
    expectDifference(System::wine, "another number for a share that is not there", [] {
        EXPECT_EQ(errorAt(OLESTR("\\\\no-such-server\\share\\")), DWORD{ERROR_BAD_NETPATH});
    });
}

TEST_F(Volumes, ARootEndsInASeparator) {
    expectDifference(System::wine, "the separator may be missing",
                     [] { EXPECT_EQ(errorAt(OLESTR("C:")), DWORD{ERROR_INVALID_NAME}); });
}

TEST_F(Volumes, KindsOfDrives) {
    EXPECT_EQ(GetDriveTypeW(OLESTR("C:\\")), UINT{DRIVE_FIXED});
    EXPECT_EQ(GetDriveTypeW(OLESTR("C:")), UINT{DRIVE_FIXED});
    EXPECT_EQ(GetDriveTypeW(nullptr), UINT{DRIVE_FIXED});
    EXPECT_EQ(GetDriveTypeW(OLESTR("Q:\\")), UINT{DRIVE_NO_ROOT_DIR});
    EXPECT_EQ(GetDriveTypeW(OLESTR("\\\\no-such-server\\share\\")), UINT{DRIVE_NO_ROOT_DIR});
}

}  // namespace
