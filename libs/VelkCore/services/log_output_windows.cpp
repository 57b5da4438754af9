#include <cstdio>
#include <cstdlib>
#include <memory>

#include "services/log_output.h"

namespace velk::core {
namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

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

}  // namespace velk::core
