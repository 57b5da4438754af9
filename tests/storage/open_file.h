/// A file that stays open while its bytes are taken and put.
#pragma once

#include <filesystem>
#include <string>

namespace velk::test {

/// Puts bytes in place: some systems wait for the medium when a file is made
/// anew. Its transfers are none of those that can be told to fail.
class OpenFile {
  public:
    explicit OpenFile(std::filesystem::path const& path);
    OpenFile(OpenFile const&) = delete;
    OpenFile& operator=(OpenFile const&) = delete;
    ~OpenFile();

    std::string bytes() const;
    void put(std::string const& bytes) const;

  private:
    int file_;
};

}  // namespace velk::test
