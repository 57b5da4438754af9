#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "host/logger.h"

/// Keeps the records of one logger for a scope, in place of the logger's file.
/// One capture at a time for each logger.
class mzLogCaptureC {
  public:
    struct Record {
        int level;
        std::string file;
        std::string function;
        int line;
        std::string message;
    };

    /// The logger has this threshold until the capture ends.
    mzLogCaptureC(StaticLogger& logger, std::int32_t threshold)
        : logger_(logger), previous_(logger.threshold()) {
        logger_.setThreshold(threshold);
        logger_.setSink(&keep, this);
    }
    ~mzLogCaptureC() {
        logger_.setSink(nullptr, nullptr);
        logger_.setThreshold(previous_);
    }
    mzLogCaptureC(mzLogCaptureC const&) = delete;
    mzLogCaptureC& operator=(mzLogCaptureC const&) = delete;

    /// The records so far, in order.
    std::vector<Record> records() const {
        std::lock_guard const guard(mutex_);
        return records_;
    }

  private:
    static void keep(void* context, mzLogRecordS const& record) {
        auto& self = *static_cast<mzLogCaptureC*>(context);
        std::lock_guard const guard(self.mutex_);
        self.records_.push_back(
            {record.level, record.file, record.function, record.line, record.message.toUtf8()});
    }

    StaticLogger& logger_;
    std::int32_t previous_;
    mutable std::mutex mutex_;
    std::vector<Record> records_;
};
