#include "drive_c.h"

#include <cstdlib>

#include <windows.h>

#include "sample_document.h"

namespace {

void writeText(OLECHAR const* key, OLECHAR const* name, std::u16string const& text) {
    HKEY opened = nullptr;
    requireSuccess(HRESULT_FROM_WIN32(RegCreateKeyExW(HKEY_CURRENT_USER, key, 0, nullptr, 0,
                                                      KEY_SET_VALUE, nullptr, &opened, nullptr)),
                   "RegCreateKeyExW");
    LSTATUS const status =
        RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<BYTE const*>(text.c_str()),
                       static_cast<DWORD>((text.size() + 1) * sizeof(OLECHAR)));
    RegCloseKey(opened);
    requireSuccess(HRESULT_FROM_WIN32(status), "RegSetValueExW");
}

}  // namespace

void mapAsDriveC(std::filesystem::path const& folder) {
    auto const registry = folder / "registry";
    std::filesystem::create_directory(registry);
    setenv("VELK_REGISTRY_DIR", registry.c_str(), 1);
    writeText(u"Software\\VelkCOMAdapter\\Volumes", u"C:\\", folder.u16string());
    // The objects of files want a file system that has streams.
    writeText(u"Software\\VelkCOMAdapter\\Volumes\\FileSystems", u"C:\\", u"NTFS");
}
