// The module's self-registration.

#include <atomic>

#include <qglobal.h>

#include "com/error.h"
#include "com/registration/registry_change.h"
#include "module/exports.h"
#include "module/process_objects.h"
#include "module/qt_version.h"
#include "module/resources/resource.h"
#include "module/thread_locale.h"
#include "module/type_library.h"

namespace {

using velk::adapter::SystemLocaleScope;

// For the current user only. Set by the first "user" and never cleared: what
// was registered for the user must be found again when it is unregistered.
std::atomic<bool> perUser{false};

/// Runs the registry scripts of all classes of the object map, and their
/// component categories.
void updateClasses(bool install) {
    auto& module = velk::adapter::comModule;
    for (auto const& entry : module.record().objects()) {
        module.updateClass(entry, install, perUser);
    }
}

HRESULT registerAll() noexcept {
    if (!velk::adapter::canUseQt(qVersion())) return HRESULT_FROM_WIN32(ERROR_REVISION_MISMATCH);
    try {
        velk::com::RegistryChange change(perUser);
        velk::adapter::comModule.updateRegistry(IDR_VELKCOMADAPTER, true, perUser);
        updateClasses(true);
        HRESULT const result = velk::adapter::registerTypeLibrary(perUser);
        change.commit();
        return result;
    }
    VELK_COM_CATCH
}

HRESULT unregisterAll() noexcept {
    try {
        velk::com::RegistryChange change(perUser);
        updateClasses(false);
        HRESULT const result = velk::adapter::unregisterTypeLibrary(perUser);
        velk::adapter::comModule.updateRegistry(IDR_VELKCOMADAPTER, false, perUser);
        change.commit();
        return result;
    }
    VELK_COM_CATCH
}

/// Whether the whole text is "user", in any case.
bool meansUser(LPCWSTR commandLine) {
    if (!commandLine) return false;
    for (char const expected : {'u', 's', 'e', 'r'}) {
        auto const given = static_cast<unsigned>(*commandLine++);
        bool const upper = given >= 'A' && given <= 'Z';
        if ((upper ? given - 'A' + 'a' : given) != static_cast<unsigned>(expected)) return false;
    }
    return *commandLine == 0;
}

}  // namespace

STDAPI DllRegisterServer() {
    SystemLocaleScope const locale;
    return registerAll();
}

STDAPI DllUnregisterServer() {
    SystemLocaleScope const locale;
    return unregisterAll();
}

STDAPI DllInstall(BOOL install, LPCWSTR commandLine) {
    SystemLocaleScope const locale;
    if (meansUser(commandLine)) perUser = true;
    if (!install) return unregisterAll();
    HRESULT const result = registerAll();
    // Where nothing was written, only somebody's former registration could go.
    if (FAILED(result) && !velk::com::RegistryChange::isWhole()) unregisterAll();
    return result;
}
