#include "host/logger.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <new>
#include <string>

#include "services/immortal.h"
#include "services/system.h"

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

void writeRecord(mzLogRecordS const& record) try {
    std::string line = std::to_string(record.level) + ' ' + record.file + ':' +
                       std::to_string(record.line) + ' ' + record.function + ": ";
    line += record.message.toUtf8().c_str();
    velk::core::writeLogLine(line + '\n');
} catch (std::bad_alloc const&) {
    // Then this record is dropped.
}

}  // namespace

void StaticLogger::init() {
    std::lock_guard const guard(outputMutex());
    initCount_.fetch_add(1);
    setThreshold(thresholdFrom(velk::core::logSetting(levelVariable_)));
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
        writeRecord(record);
    }
}

void StaticLogger::setSink(Sink sink, void* context) {
    std::lock_guard const guard(outputMutex());
    sink_ = sink;
    sinkContext_ = context;
}
