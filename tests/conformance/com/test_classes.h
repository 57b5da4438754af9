/// Putting the test servers into the registry, and finding their files.
#pragma once

#include <string>

#include <windows.h>

#include <objbase.h>

#include "servers/com/class_server.h"

namespace velk::test {

using Text = std::basic_string<OLECHAR>;

/// The path of a test server's file, which stands beside the test programs.
inline Text serverPath(Text const& name) {
    OLECHAR buffer[1024];
    DWORD const length = GetModuleFileNameW(nullptr, buffer, 1024);
    Text const program(buffer, length);
    auto const folder = program.substr(0, program.find_last_of(OLESTR("/\\")) + 1);
    return folder + OLESTR("servers/") + name + VELK_MODULE_SUFFIX;
}

inline Text idText(REFGUID id) {
    OLECHAR buffer[64];
    StringFromGUID2(id, buffer, 64);
    return buffer;
}

/// Sets the default value of a key below HKEY_LOCAL_MACHINE\Software\Classes,
/// or of another root; makes the key when it is missing.
inline LSTATUS setClassesText(Text const& key, OLECHAR const* name, Text const& value,
                              HKEY root = HKEY_LOCAL_MACHINE, DWORD type = REG_SZ) {
    HKEY made = nullptr;
    LSTATUS status =
        RegCreateKeyExW(root, (OLESTR("Software\\Classes\\") + key).c_str(), 0, nullptr,
                        REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &made, nullptr);
    if (status != ERROR_SUCCESS) return status;
    status = RegSetValueExW(made, name, 0, type, reinterpret_cast<BYTE const*>(value.c_str()),
                            static_cast<DWORD>((value.size() + 1) * sizeof(OLECHAR)));
    RegCloseKey(made);
    return status;
}

inline void deleteClassesKey(Text const& key, HKEY root = HKEY_LOCAL_MACHINE) {
    RegDeleteTreeW(root, (OLESTR("Software\\Classes\\") + key).c_str());
}

/// A class that is registered as long as this lives.
class RegisteredClass {
  public:
    RegisteredClass(REFCLSID id, Text const& path, Text const& model = OLESTR("Apartment"),
                    HKEY root = HKEY_LOCAL_MACHINE, DWORD type = REG_SZ)
        : key_(OLESTR("CLSID\\") + idText(id)), root_(root) {
        Text const server = key_ + OLESTR("\\InprocServer32");
        setClassesText(server, nullptr, path, root, type);
        setClassesText(server, OLESTR("ThreadingModel"), model, root);
    }
    RegisteredClass(RegisteredClass const&) = delete;
    RegisteredClass& operator=(RegisteredClass const&) = delete;
    ~RegisteredClass() { deleteClassesKey(key_, root_); }

  private:
    Text key_;
    HKEY root_;
};

/// The calling thread's stay in an apartment.
class ApartmentStay {
  public:
    explicit ApartmentStay(DWORD flags) : result_(CoInitializeEx(nullptr, flags)) {}
    ApartmentStay(ApartmentStay const&) = delete;
    ApartmentStay& operator=(ApartmentStay const&) = delete;
    ~ApartmentStay() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }
    HRESULT result() const { return result_; }

  private:
    HRESULT result_;
};

}  // namespace velk::test
