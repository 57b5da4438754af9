#include "platform/system/trace.h"

#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <velk_trace.h>

#include "platform/system/environment.h"

namespace velk::platform {
namespace {

constexpr long levelOfRefusals = 9000;

/// The descriptor to write to; -1 when the file is none that may be written to.
int openTraceFile(char const* path) {
    // A pipe without a reader would be waited for, a link may lead anywhere.
    constexpr int flags =
        O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    int const file = open(path, flags, 0600);
    struct stat info;
    if (file < 0 || (fstat(file, &info) == 0 && S_ISREG(info.st_mode))) return file;
    close(file);
    return -1;
}

}  // namespace

void trace(std::string const& what) {
    char const* const threshold = environment("VELK_TRACE_LEVEL");
    char* end = nullptr;
    if (threshold == nullptr || *threshold == '\0') return;
    if (std::strtol(threshold, &end, 10) > levelOfRefusals || *end != '\0') return;
    auto const line = std::to_string(levelOfRefusals) + " registry: " + what + '\n';
    VelkWriteTrace(line.data(), static_cast<DWORD>(line.size()));
}

}  // namespace velk::platform

using namespace velk::platform;

char const* VelkSetting(char const* name) {
    return environment(name);
}

void VelkWriteTrace(char const* line, DWORD size) {
    if (isPrivileged()) return;
    char const* const path = environment("VELK_TRACE_FILE");
    bool const hasFile = path != nullptr && *path != '\0';
    int const file = hasFile ? openTraceFile(path) : STDERR_FILENO;
    if (file < 0) return;
    // In one piece, so that the lines of several processes do not mix.
    static_cast<void>(!write(file, line, size));
    if (hasFile) close(file);
}
