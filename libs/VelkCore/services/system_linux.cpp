#include <dlfcn.h>

#include <velk_trace.h>

#include "services/system.h"

namespace velk::core {

char const* logSetting(char const* name) {
    return VelkSetting(name);
}

void writeLogLine(std::string_view line) {
    VelkWriteTrace(line.data(), static_cast<DWORD>(line.size()));
}

void const* moduleOfAddress(void const* address) noexcept {
    Dl_info info{};
    return dladdr(address, &info) != 0 ? info.dli_fbase : nullptr;
}

}  // namespace velk::core
