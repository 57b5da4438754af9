#pragma once

#include <string>

#include "host/logger.h"

/// Level of every trace record.
inline constexpr int mzTraceLevel = 5000;

/// Where a trace record comes from.
struct mzTracePointS {
    /// Name of the source unit with its extension. The texts of a trace point
    /// live as long as the program.
    char const* file;
    /// The full signature text of the method.
    char const* function;
    int line;
};

/// Writes one trace record when the logger lets it through.
inline void mzTraceRecord(StaticLogger& logger, mzTracePointS const& point, char const* message) {
    if (logger.wants(mzTraceLevel)) {
        logger.log(mzTraceLevel, point.file, point.function, point.line, mzComStringC(message));
    }
}

/// Traces the entry to and the exit from a scope. With a threshold above the
/// trace level it writes nothing and copies nothing.
class mzFrameTraceC {
  public:
    mzFrameTraceC(StaticLogger& logger, char const* frameName, mzTracePointS const& point)
        : logger_(logger), point_(point) {
        if (!logger_.wants(mzTraceLevel)) return;
        frameName_ = frameName ? frameName : "";
        log(mzComStringC("Enter Frame ") + frameName_.c_str());
    }

    ~mzFrameTraceC() {
        try {
            if (!logger_.wants(mzTraceLevel)) return;
            // The name was not kept when the trace was off at entry.
            log(frameName_.empty() ? mzComStringC("Leave Frame")
                                   : mzComStringC("Leave Frame ") + frameName_.c_str());
        } catch (...) {
            // Out of memory for a trace record: the frame's work goes on.
        }
    }

    mzFrameTraceC(mzFrameTraceC const&) = delete;
    mzFrameTraceC& operator=(mzFrameTraceC const&) = delete;

  private:
    void log(mzComStringC const& message) {
        logger_.log(mzTraceLevel, point_.file, point_.function, point_.line, message);
    }

    StaticLogger& logger_;
    mzTracePointS point_;
    std::string frameName_;
};
