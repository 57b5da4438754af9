#include "module_attachment.h"

namespace velk::adapter {

// The loader calls the entry point.
ModuleAttachment::ModuleAttachment() = default;
ModuleAttachment::~ModuleAttachment() = default;

}  // namespace velk::adapter
