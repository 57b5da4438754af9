#include "host/logger.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <QtGlobal>

#include "host/cleanup.h"
#include "host/log_capture.h"

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
    static constexpr struct {
        char const* text;
        std::int32_t threshold;
    } rows[] = {
        {"5000", 5000},
        {"0", 0},
        {"-1", -1},
        // The mark of an uninitialised logger is no threshold.
        {"-2", -1},
        {"2147483647", StaticLogger::silent},
        {"2147483648", StaticLogger::silent},
        {"99999999999999999999", StaticLogger::silent},
        {"high", StaticLogger::silent},
        {"50x", StaticLogger::silent},
        {"", StaticLogger::silent},
    };
    for (auto const& row : rows) {
        Environment const level("VELK_TRACE_LEVEL", row.text);
        StaticLogger logger;
        logger.init();
        EXPECT_EQ(logger.threshold(), row.threshold) << row.text;
    }
    StaticLogger unset("VELK_TEST_NO_SUCH_VARIABLE");
    EXPECT_FALSE(unset.wants(StaticLogger::silent - 1));
}

TEST(Logger, WritesToTheConfiguredFile) {
    auto const path = std::filesystem::temp_directory_path() / "velk_logger_test.log";
    std::filesystem::remove(path);
    {
        Environment const file("VELK_TRACE_FILE", path.string());
        StaticLogger logger;
        logger.log(7, "unit.cpp", "void f()", 3, "first");
        logger.log(8, nullptr, nullptr, 0, mzComStringC(OLESTR("\u00e4")));
    }
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    EXPECT_EQ(text.str(), "7 unit.cpp:3 void f(): first\n8 :0 : \xc3\xa4\n");
    std::filesystem::remove(path);
}

TEST(Logger, AFileThatCannotBeWrittenLosesTheRecordOnly) {
    Environment const file("VELK_TRACE_FILE", "/nonexistent-folder/velk.log");
    StaticLogger logger;
    logger.log(1, "f", "g", 1, "lost");
    SUCCEED();
}

TEST(Logger, RacingThreadsInitialiseOnce) {
    StaticLogger logger;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 8; ++i) threads.emplace_back([&] { logger.wants(1); });
    }
    EXPECT_EQ(logger.initCount(), 1u);
}

TEST(Logger, RecordsOfSeveralThreadsAllArrive) {
    StaticLogger logger;
    mzLogCaptureC const capture(logger, 0);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 100; ++i) logger.log(1, "f", "g", i, "m");
            });
        }
    }
    EXPECT_EQ(capture.records().size(), 400u);
}

TEST(Logger, SingletonsAreReportedToTheBaseLog) {
    mzLogCaptureC const capture(baseLogger, 0);
    baselog_singleton_changed("Thing", nullptr, -3, 0);
    baselog_singleton_changed(nullptr, nullptr, 0, 9);
    ASSERT_EQ(capture.records().size(), 2u);
    EXPECT_EQ(capture.records()[0].message, "Singleton Thing is created, priority -3");
}

}  // namespace
