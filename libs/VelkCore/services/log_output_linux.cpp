#include <velk_trace.h>

#include "services/log_output.h"

namespace velk::core {

char const* logSetting(char const* name) {
    return VelkSetting(name);
}

void writeLogLine(std::string_view line) {
    VelkWriteTrace(line.data(), static_cast<DWORD>(line.size()));
}

}  // namespace velk::core
