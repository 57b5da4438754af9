/// Who calls the module's entry point.
#pragma once

namespace velk::adapter {

/// While it lives, the entry point hears of the ends of threads; when it ends,
/// it hears of the end of the module. On systems whose loader calls the entry
/// point by itself this does nothing.
class ModuleAttachment {
  public:
    ModuleAttachment();
    ~ModuleAttachment();
    ModuleAttachment(ModuleAttachment const&) = delete;
    ModuleAttachment& operator=(ModuleAttachment const&) = delete;
};

/// Has the entry point hear of the end already when the process begins to end,
/// where that is possible: before anything goes that came into being before
/// the first call with this stage. To be called at each stage that the
/// application reaches, so that it ends while everything that it is built on is
/// whole. Any thread.
enum class ApplicationStage { built, initialised };
void detachWhenProcessEnds(ApplicationStage stage);

/// Keeps the module loaded until the process ends, whatever is freed. For a
/// thread of this module that nobody can wait for. Any thread.
void stayLoaded() noexcept;

}  // namespace velk::adapter
