#include <cstdlib>
#include <mutex>

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

namespace {

void detachProcess() {
    DllMain(nullptr, DLL_PROCESS_DETACH, nullptr);
}

std::once_flag detachIsRegistered;

}  // namespace

// Exit handlers run in the reverse order of their registration, among the
// destructors of all libraries' static objects.
void detachWhenProcessEnds() {
    std::call_once(detachIsRegistered, [] { std::atexit(&detachProcess); });
}

}  // namespace velk::adapter
