#include "support/volumes.h"

#include <cstdlib>
#include <filesystem>

#include "support/mapped_volume.h"

namespace velk::test {

namespace {

constexpr OLECHAR const* volumes = OLESTR("Software\\VelkCOMAdapter\\Volumes");
constexpr OLECHAR const* fileSystems = OLESTR("Software\\VelkCOMAdapter\\Volumes\\FileSystems");

void write(HKEY hive, OLECHAR const* key, OLECHAR const* name,
           std::basic_string<OLECHAR> const& text) {
    HKEY opened = nullptr;
    if (RegCreateKeyExW(hive, key, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr) !=
        ERROR_SUCCESS) {
        return;
    }
    RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<BYTE const*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(OLECHAR)));
    RegCloseKey(opened);
}

void remove(HKEY hive, OLECHAR const* key, OLECHAR const* name) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(hive, key, 0, KEY_SET_VALUE, &opened) != ERROR_SUCCESS) return;
    RegDeleteValueW(opened, name);
    RegCloseKey(opened);
}

}  // namespace

MappedVolume::MappedVolume(OLECHAR const* root, std::string const& folder,
                           OLECHAR const* fileSystem, HKEY hive)
    : hive_(hive), root_(root) {
    write(hive_, volumes, root, std::filesystem::path(folder).u16string());
    if (fileSystem != nullptr) write(hive_, fileSystems, root, fileSystem);
}

MappedVolume::~MappedVolume() {
    remove(hive_, volumes, root_.c_str());
    remove(hive_, fileSystems, root_.c_str());
}

namespace {

std::string newFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "velk-drive-XXXXXX").string();
    char const* const made = mkdtemp(pattern.data());
    return made != nullptr ? made : std::string();
}

}  // namespace

DriveC::DriveC() : folder_(newFolder()) {
    write(HKEY_CURRENT_USER, volumes, OLESTR("C:\\"), std::filesystem::path(folder_).u16string());
    write(HKEY_CURRENT_USER, fileSystems, OLESTR("C:\\"), OLESTR("NTFS"));
}

DriveC::~DriveC() {
    remove(HKEY_CURRENT_USER, volumes, OLESTR("C:\\"));
    remove(HKEY_CURRENT_USER, fileSystems, OLESTR("C:\\"));
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

}  // namespace velk::test
