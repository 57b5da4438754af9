#include "module.h"

#include <array>
#include <stdexcept>
#include <string>
#include <string_view>

#include <objbase.h>

HMODULE loadAdapterModule() {
    std::array<OLECHAR, 4096> file{};
    DWORD const length = GetModuleFileNameW(nullptr, file.data(), file.size());
    std::basic_string<OLECHAR> path(file.data(), length);
    path.resize(path.find_last_of(OLESTR("/\\")) + 1);
    constexpr std::string_view name = VELK_MODULE_FILE;
    path.append(name.begin(), name.end());
    HMODULE const module = LoadLibraryW(path.c_str());
    if (module == nullptr) throw std::runtime_error("the module cannot be loaded");
    return module;
}
