#include "host/frame_trace.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "host/log_capture.h"

namespace {

constexpr mzTracePointS point{"unit.cpp", "void unit()", 42};

std::vector<std::string> messagesOf(mzLogCaptureC const& capture) {
    std::vector<std::string> messages;
    for (auto const& record : capture.records()) messages.push_back(record.message);
    return messages;
}

using Messages = std::vector<std::string>;

TEST(FrameTrace, WritesEntryAndExit) {
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel);
    {
        mzFrameTraceC const frame(codeTrackLogger, "CreateObject", point);
        mzTraceRecord(codeTrackLogger, point, "inside");
    }
    EXPECT_EQ(messagesOf(capture),
              (Messages{"Enter Frame CreateObject", "inside", "Leave Frame CreateObject"}));
    auto const record = capture.records().front();
    EXPECT_EQ(record.level, 5000);
    EXPECT_EQ(record.file, "unit.cpp");
    EXPECT_EQ(record.function, "void unit()");
    EXPECT_EQ(record.line, 42);
}

TEST(FrameTrace, WritesTheExitWhenAnExceptionPasses) {
    mzLogCaptureC const capture(codeTrackLogger, 0);
    try {
        mzFrameTraceC const frame(codeTrackLogger, "Failing", point);
        throw std::runtime_error("passes");
    } catch (std::runtime_error const&) {
    }
    EXPECT_EQ(messagesOf(capture), (Messages{"Enter Frame Failing", "Leave Frame Failing"}));
}

TEST(FrameTrace, AboveTheLevelNothingIsWritten) {
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel + 1);
    {
        mzFrameTraceC const frame(codeTrackLogger, "Quiet", point);
        mzTraceRecord(codeTrackLogger, point, "quiet");
    }
    EXPECT_EQ(messagesOf(capture), Messages{});
}

TEST(FrameTrace, SwitchedOnInsideItHasNoNameToLeave) {
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel + 1);
    {
        mzFrameTraceC const frame(codeTrackLogger, "Late", point);
        codeTrackLogger.setThreshold(mzTraceLevel);
    }
    EXPECT_EQ(messagesOf(capture), Messages{"Leave Frame"});
}

TEST(FrameTrace, SwitchedOffInsideItLeavesSilently) {
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel);
    {
        mzFrameTraceC const frame(codeTrackLogger, "Early", point);
        codeTrackLogger.setThreshold(StaticLogger::silent);
    }
    EXPECT_EQ(messagesOf(capture), Messages{"Enter Frame Early"});
}

TEST(FrameTrace, AnUninitialisedLoggerIsInitialisedOnce) {
    StaticLogger logger;
    ASSERT_EQ(logger.threshold(), -2);
    {
        mzFrameTraceC const frame(logger, "First", point);
        EXPECT_EQ(logger.initCount(), 1u);
    }
    mzFrameTraceC const frame(logger, "Second", point);
    EXPECT_EQ(logger.initCount(), 1u);
    EXPECT_NE(logger.threshold(), -2);
}

}  // namespace
