/// Drives and shares for tests, in the registry of the test.
#pragma once

#include <string>

#include <windows.h>

namespace velk::test {

/// Makes sure that `C:\` is a volume with NTFS: Windows has it; elsewhere it
/// becomes a new folder, which goes with the object.
class DriveC {
  public:
    DriveC();
    ~DriveC();
    DriveC(DriveC const&) = delete;
    DriveC& operator=(DriveC const&) = delete;

  private:
    std::string folder_;
};

}  // namespace velk::test
