#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "host/com_string.h"
#include "host/export.h"

/// One record of a log, valid during the call that delivers it.
struct mzLogRecordS {
    int level;
    /// Never null.
    char const* file;
    char const* function;
    int line;
    mzComStringC const& message;
};

/// A logger with a threshold. A record is wanted when its level is at least
/// the threshold. Any thread.
///
/// `init` reads the threshold from the logger's environment variable; without
/// it, or when it is no number, nothing is wanted. VELK_TRACE_FILE names the
/// regular file that records are appended to; without it they go to the standard
/// error output.
class VELKCORE_API StaticLogger {
  public:
    /// The threshold of a logger that was not initialised yet.
    static constexpr std::int32_t uninitialised = -2;
    /// The threshold that lets nothing through.
    static constexpr std::int32_t silent = std::numeric_limits<std::int32_t>::max();

    /// Receives the records instead of the file.
    using Sink = void (*)(void* context, mzLogRecordS const& record);

    /// The environment variable that holds the threshold; the name must live
    /// as long as the logger.
    constexpr explicit StaticLogger(char const* levelVariable = "VELK_TRACE_LEVEL") noexcept
        : levelVariable_(levelVariable) {}
    StaticLogger(StaticLogger const&) = delete;
    StaticLogger& operator=(StaticLogger const&) = delete;

    std::int32_t threshold() const noexcept { return threshold_.load(std::memory_order_relaxed); }
    void setThreshold(std::int32_t level) noexcept { threshold_.store(level); }
    /// Whether a record of this level is wanted; initialises the logger first
    /// when that was not done yet.
    bool wants(int level) {
        if (threshold() == uninitialised) initOnce();
        return level >= threshold();
    }

    /// Sets the threshold from the configuration.
    void init();
    /// How often `init` ran.
    unsigned initCount() const noexcept { return initCount_.load(); }
    /// Writes one record, whatever the threshold. Null texts count as empty;
    /// a record that cannot be written is dropped.
    void log(int level, char const* file, char const* function, int line,
             mzComStringC const& message);
    /// Sends the records to `sink` until it is null again. No call of the sink
    /// is running when this returns.
    void setSink(Sink sink, void* context);

  private:
    /// `init`, unless another thread was faster.
    void initOnce();

    std::atomic<std::int32_t> threshold_{uninitialised};
    std::atomic<unsigned> initCount_{0};
    char const* levelVariable_;
    Sink sink_ = nullptr;
    void* sinkContext_ = nullptr;
};

// The threshold is the first field, a plain signed 32-bit word.
static_assert(std::is_standard_layout_v<StaticLogger>);
static_assert(sizeof(std::atomic<std::int32_t>) == sizeof(std::int32_t));

/// The logger of the frame traces.
extern VELKCORE_API StaticLogger codeTrackLogger;

/// The log of the runtime itself: `baselog_singleton_changed` writes here, at
/// level 1000. The variable of its threshold is VELK_BASE_LOG_LEVEL.
extern VELKCORE_API StaticLogger baseLogger;
