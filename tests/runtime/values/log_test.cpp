#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <QtGlobal>

#include "host/cleanup.h"
#include "host/frame_trace.h"
#include "host/log_capture.h"

// The loggers and the traces that go to them.

namespace {

/// An environment variable for a scope.
class Environment {
  public:
    Environment(char const* name, std::string const& value) : name_(name) {
        qputenv(name, QByteArray::fromStdString(value));
    }
    ~Environment() { qunsetenv(name_); }

  private:
    char const* name_;
};

TEST(Logger, ThresholdComesFromTheEnvironment) {
    constexpr auto silent = StaticLogger::silent;
    // -2 is the mark of a logger that was not initialised, and no threshold.
    std::pair<char const*, std::int32_t> const rows[] = {{"5000", 5000},
                                                         {"0", 0},
                                                         {"-1", -1},
                                                         {"-2", -1},
                                                         {"2147483647", silent},
                                                         {"", silent},
                                                         {"high", silent},
                                                         {"50x", silent},
                                                         {"2147483648", silent},
                                                         {"99999999999999999999", silent}};
    for (auto const& [text, threshold] : rows) {
        Environment const level("VELK_TRACE_LEVEL", text), nowhere("VELK_TRACE_FILE", "/none/velk");
        StaticLogger logger;
        ASSERT_EQ(logger.threshold(), +StaticLogger::uninitialised);
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] { mzFrameTraceC const frame(logger, "", {"", "", 1}); });
        }
        threads.clear();
        EXPECT_EQ(logger.threshold(), threshold) << text;
        EXPECT_EQ(logger.initCount(), 1u);
    }
    StaticLogger unset("VELK_TEST_NO_SUCH_VARIABLE");
    EXPECT_FALSE(unset.wants(silent - 1));
}

TEST(Logger, WritesToTheConfiguredFile) {
    auto const path = std::filesystem::temp_directory_path() / "velk_logger_test.log";
    std::filesystem::remove(path);
    StaticLogger logger;
    {
        Environment const file("VELK_TRACE_FILE", path.string());
        logger.log(7, "unit.cpp", "void f()", 3, "first");
        logger.log(8, nullptr, nullptr, 0, mzComStringC(OLESTR("\u00e4")));
    }
    {
        Environment const file("VELK_TRACE_FILE", "/nonexistent-folder/velk.log");
        EXPECT_NO_THROW(logger.log(1, "f", "g", 1, "lost"));
    }
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    EXPECT_EQ(text.str(), "7 unit.cpp:3 void f(): first\n8 :0 : \xc3\xa4\n");
    std::filesystem::remove(path);
}

TEST(Logger, RecordsOfSeveralThreadsAllArrive) {
    mzLogCaptureC const capture(baseLogger, 0);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([] {
                for (int i = 0; i < 100; ++i) baseLogger.log(1, "f", "g", i, "m");
            });
        }
    }
    baselog_singleton_changed("Thing", nullptr, -3, 0);
    baselog_singleton_changed(nullptr, nullptr, 0, 9);
    ASSERT_EQ(capture.records().size(), 402u);
    EXPECT_EQ(capture.records()[400].message, "Singleton Thing is created, priority -3");
}

TEST(FrameTrace, WritesEntryAndExitAsTheThresholdIsThen) {
    constexpr mzTracePointS point{"unit.cpp", "void unit()", 42};
    constexpr int on = mzTraceLevel, off = mzTraceLevel + 1;
    struct {
        int atEntry, atExit;
        char const* messages;
    } const rows[] = {{on, on, "Enter Frame Name;inside;Leave Frame Name;"},
                      {off, off, ""},
                      {off, on, "inside;Leave Frame;"},
                      {on, off, "Enter Frame Name;"}};
    for (auto const& row : rows) {
        mzLogCaptureC const capture(codeTrackLogger, row.atEntry);
        try {
            mzFrameTraceC const frame(codeTrackLogger, "Name", point);
            codeTrackLogger.setThreshold(row.atExit);
            mzTraceRecord(codeTrackLogger, point, "inside");
            throw std::runtime_error("passes");
        } catch (std::runtime_error const&) {
        }
        std::string messages;
        for (auto const& record : capture.records()) {
            messages += record.message + ';';
            EXPECT_EQ(record.level, 5000);
            EXPECT_EQ(record.file + record.function, "unit.cppvoid unit()");
            EXPECT_EQ(record.line, 42);
        }
        EXPECT_EQ(messages, row.messages);
    }
}

}  // namespace
