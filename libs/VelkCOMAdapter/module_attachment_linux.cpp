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

struct ProcessEnd {
    ~ProcessEnd() { DllMain(nullptr, DLL_PROCESS_DETACH, nullptr); }
};

}  // namespace

// Static objects go in the reverse order of their construction, those of all
// libraries together, and those of this module with it when it is unloaded
// first. An exit handler would stay behind then where a sanitizer keeps the
// list of them.
void detachWhenProcessEnds() {
    static ProcessEnd const end;
    static_cast<void>(end);
}

}  // namespace velk::adapter
