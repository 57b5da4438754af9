/// Entries of the table of drives and shares, where the layer keeps one.
#pragma once

#include <string>

#include <windows.h>

namespace velk::test {

/// An entry of the user's table, which goes with the object.
class MappedVolume {
  public:
    /// \param root        `X:\` or `\\server\share\`
    /// \param folder      UTF-8
    /// \param fileSystem  to report instead of what is mounted there; may be null
    MappedVolume(OLECHAR const* root, std::string const& folder,
                 OLECHAR const* fileSystem = nullptr, HKEY hive = HKEY_CURRENT_USER);
    ~MappedVolume();
    MappedVolume(MappedVolume const&) = delete;
    MappedVolume& operator=(MappedVolume const&) = delete;

  private:
    HKEY hive_;
    std::basic_string<OLECHAR> root_;
};

}  // namespace velk::test
