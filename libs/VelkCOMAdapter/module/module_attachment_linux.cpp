#include "module/module_attachment.h"

#include <dlfcn.h>

#include "module/dll_main.h"

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

template <ApplicationStage>
void detachBeforeAnythingOlder() {
    static ProcessEnd const end;
    static_cast<void>(end);
}

}  // namespace

// Static objects go in the reverse order of their construction, those of all
// libraries together, and those of this module with it when it is unloaded
// first. An exit handler would stay behind then where a sanitizer keeps the
// list of them.
void detachWhenProcessEnds(ApplicationStage stage) {
    if (stage == ApplicationStage::built) {
        detachBeforeAnythingOlder<ApplicationStage::built>();
    } else {
        detachBeforeAnythingOlder<ApplicationStage::initialised>();
    }
}

void stayLoaded() noexcept {
    Dl_info own{};
    if (dladdr(reinterpret_cast<void*>(&stayLoaded), &own) == 0) return;
    // A handle that is never closed.
    static_cast<void>(dlopen(own.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE));
}

}  // namespace velk::adapter
