#include "dll_main.h"
#include "module_attachment.h"

namespace velk::adapter {

ModuleAttachment::ModuleAttachment() {
    DllMain(nullptr, DLL_PROCESS_ATTACH, nullptr);
    VelkAttachModule(&DllMain);
}

// The application thread ends first, so that its own end still reaches the
// entry point.
ModuleAttachment::~ModuleAttachment() {
    DllMain(nullptr, DLL_PROCESS_DETACH, nullptr);
    VelkDetachModule(&DllMain);
}

}  // namespace velk::adapter
