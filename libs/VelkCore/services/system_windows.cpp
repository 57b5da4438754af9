#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "services/system.h"

namespace velk::core {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// The library stays once it is loaded, and with it the libraries that it
// stands on: modules come and go, but both leave work behind for the ends of
// threads and of the process. A linker option does the same on Linux.
bool stayLoaded() noexcept {
    static int const addressInLibrary = 0;
    constexpr DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN;
    HMODULE library = nullptr;
    return GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(&addressInLibrary), &library);
}

[[maybe_unused]] bool const stays = stayLoaded();

}  // namespace

char const* logSetting(char const* name) {
    return std::getenv(name);
}

void writeLogLine(std::string_view line) {
    char const* const path = std::getenv("VELK_TRACE_FILE");
    bool const hasFile = path != nullptr && *path != '\0';
    std::unique_ptr<std::FILE, CloseFile> const file(hasFile ? std::fopen(path, "ab") : nullptr);
    if (hasFile && !file) return;
    std::fwrite(line.data(), 1, line.size(), file ? file.get() : stderr);
}

void const* moduleOfAddress(void const* address) noexcept {
    // The system would take null for the program.
    if (!address) return nullptr;
    HMODULE module = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    return GetModuleHandleExW(flags, static_cast<LPCWSTR>(address), &module) ? module : nullptr;
}

}  // namespace velk::core
