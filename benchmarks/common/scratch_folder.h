/// A place for the files of one run.
#pragma once

#include <filesystem>

/// A new folder, which goes with the object.
class ScratchFolder {
  public:
    /// Throws std::runtime_error when no folder can be made.
    ScratchFolder();
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;
    ~ScratchFolder();

    std::filesystem::path const& path() const { return path_; }

  private:
    std::filesystem::path path_;
};
