#include "module_attachment.h"

namespace velk::adapter {

// The loader calls the entry point.
ModuleAttachment::ModuleAttachment() = default;
ModuleAttachment::~ModuleAttachment() = default;

// The system ends the other threads of a process that ends.
void detachWhenProcessEnds() {}

}  // namespace velk::adapter
