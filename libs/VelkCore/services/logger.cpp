#include "host/logger.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "services/immortal.h"

constinit StaticLogger codeTrackLogger;
constinit StaticLogger baseLogger("VELK_BASE_LOG_LEVEL");

namespace {

/// Guards sinks and files. Recursive: a sink may log.
std::recursive_mutex& outputMutex() {
    static velk::core::Immortal<std::recursive_mutex> mutex;
    return *mutex;
}

std::int32_t thresholdFrom(char const* text) {
    if (!text || !*text) return StaticLogger::silent;
    char* end = nullptr;
    errno = 0;
    long const level = std::strtol(text, &end, 10);
    if (*end != '\0' || errno == ERANGE || level > StaticLogger::silent) {
        return StaticLogger::silent;
    }
    // -2 would have the logger read its configuration for every record.
    return level < 0 ? -1 : static_cast<std::int32_t>(level);
}

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

void writeRecord(std::FILE* output, mzLogRecordS const& record) {
    std::fprintf(output, "%d %s:%d %s: %s\n", record.level, record.file, record.line,
                 record.function, record.message.toUtf8().c_str());
}

/// Appends to the configured file, which is open only meanwhile, so that
/// several processes can share it.
void writeToConfiguredOutput(mzLogRecordS const& record) {
    char const* const path = std::getenv("VELK_TRACE_FILE");
    if (!path || !*path) {
        writeRecord(stderr, record);
        return;
    }
    std::unique_ptr<std::FILE, CloseFile> const file(std::fopen(path, "ab"));
    if (file) writeRecord(file.get(), record);
}

}  // namespace

void StaticLogger::init() {
    std::lock_guard const guard(outputMutex());
    initCount_.fetch_add(1);
    setThreshold(thresholdFrom(std::getenv(levelVariable_)));
}

void StaticLogger::initOnce() {
    std::lock_guard const guard(outputMutex());
    if (threshold() == uninitialised) init();
}

void StaticLogger::log(int level, char const* file, char const* function, int line,
                       mzComStringC const& message) {
    mzLogRecordS const record{level, file ? file : "", function ? function : "", line, message};
    std::lock_guard const guard(outputMutex());
    if (sink_) {
        sink_(sinkContext_, record);
    } else {
        writeToConfiguredOutput(record);
    }
}

void StaticLogger::setSink(Sink sink, void* context) {
    std::lock_guard const guard(outputMutex());
    sink_ = sink;
    sinkContext_ = context;
}
