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

}  // namespace velk::adapter
