#include "platform/com/class_modules.h"

#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <vector>

#include <winbase.h>

#include "platform/com/held_object.h"
#include "platform/system/immortal.h"

namespace velk::platform::com {

using Clock = std::chrono::steady_clock;

struct ClassModule {
    HMODULE handle = nullptr;
    decltype(&DllGetClassObject) getClassObject = nullptr;
    decltype(&DllCanUnloadNow) canUnloadNow = nullptr;
    bool isApartmentThreaded = true;

    // Under the lock of the modules from here on.
    int users = 0;
    /// Counts every use, so that one during a question is noticed.
    std::uint64_t uses = 0;
    std::optional<Clock::time_point> idleSince;
    /// The one thread that ever used the module, or 0 when there were more.
    DWORD onlyThread = GetCurrentThreadId();

    void countUse() {
        ++users;
        ++uses;
        idleSince.reset();
        if (onlyThread != GetCurrentThreadId()) onlyThread = 0;
    }

    /// Nobody can be inside any more: not even on the way out of the call
    /// after which the module first said that it can go.
    bool isLeft(Clock::time_point now, std::chrono::milliseconds delay) const {
        if (isApartmentThreaded && onlyThread == GetCurrentThreadId()) return true;
        return now - *idleSince >= delay;
    }
};

namespace {

using ModulePointer = std::shared_ptr<ClassModule>;

struct Modules {
    std::mutex lock;
    std::map<std::u16string, ModulePointer> byPath;
    /// The paths that are being loaded, each with the thread that does it.
    std::map<std::u16string, DWORD> loading;
    std::condition_variable loaded;
};

Modules& modules() {
    static Immortal<Modules> all;
    return *all;
}

template <typename Function>
Function exported(HMODULE module, char const* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

/// The module of a path, counted as in use; null when the caller is to load it.
/// One thread loads, the others wait: only a module whose start-up comes back
/// for its own classes is not made to wait for itself.
ModulePointer findInUse(std::u16string const& path) {
    std::unique_lock guard(modules().lock);
    DWORD const self = GetCurrentThreadId();
    auto const mayGoOn = [&] {
        auto const busy = modules().loading.find(path);
        return busy == modules().loading.end() || busy->second == self;
    };
    modules().loaded.wait(guard, mayGoOn);
    auto const found = modules().byPath.find(path);
    if (found == modules().byPath.end()) {
        modules().loading.emplace(path, self);
        return nullptr;
    }
    found->second->countUse();
    return found->second;
}

/// Takes note of the end of loading. The module is null when that failed; else
/// it is counted as in use, or another one that has come first.
ModulePointer endLoading(std::u16string const& path, ModulePointer module) {
    {
        std::lock_guard const guard(modules().lock);
        modules().loading.erase(path);
        if (module != nullptr) {
            module = modules().byPath.try_emplace(path, module).first->second;
            module->countUse();
        }
    }
    modules().loaded.notify_all();
    return module;
}

/// Loads without a lock, since loading runs the module's own start-up.
HRESULT load(ModuleOfClass const& where, ClassModule& module) {
    module.handle = LoadLibraryW(where.path.c_str());
    if (module.handle == nullptr) return HRESULT_FROM_WIN32(GetLastError());
    module.canUnloadNow = exported<decltype(&DllCanUnloadNow)>(module.handle, "DllCanUnloadNow");
    module.getClassObject =
        exported<decltype(&DllGetClassObject)>(module.handle, "DllGetClassObject");
    module.isApartmentThreaded = where.isApartmentThreaded;
    if (module.getClassObject != nullptr) return S_OK;
    bool const outOfMemory = GetLastError() == ERROR_NOT_ENOUGH_MEMORY;
    FreeLibrary(module.handle);
    return outOfMemory ? E_OUTOFMEMORY : CO_E_ERRORINDLL;
}

/// A module that is asked whether it can go.
struct Candidate {
    std::u16string path;
    ModulePointer module;
    std::uint64_t usesBefore;
};

std::vector<Candidate> takeCandidates() {
    std::vector<Candidate> candidates;
    std::lock_guard const guard(modules().lock);
    for (auto const& [path, module] : modules().byPath) {
        if (module->users != 0 || module->canUnloadNow == nullptr) continue;
        ++module->users;
        candidates.push_back({path, module, module->uses});
    }
    return candidates;
}

/// Decides about one candidate after its answer; true when it is to be freed,
/// and nobody can find it any more.
bool takeOut(Candidate const& candidate, bool saysYes, std::chrono::milliseconds delay) {
    std::lock_guard const guard(modules().lock);
    auto& module = *candidate.module;
    --module.users;
    bool const undisturbed = module.users == 0 && module.uses == candidate.usesBefore;
    if (!saysYes || !undisturbed) {
        module.idleSince.reset();
        return false;
    }
    auto const now = Clock::now();
    if (!module.idleSince) module.idleSince = now;
    if (!module.isLeft(now, delay)) return false;
    modules().byPath.erase(candidate.path);
    return true;
}

}  // namespace

ClassModuleUse::~ClassModuleUse() {
    if (module_ == nullptr) return;
    std::lock_guard const guard(modules().lock);
    --module_->users;
}

HRESULT ClassModuleUse::classObject(REFCLSID id, REFIID riid, void** object) const {
    return askForObject(object, [&] { return module_->getClassObject(id, riid, object); });
}

HRESULT useClassModule(ModuleOfClass const& where, ClassModuleUse& use) {
    // Neither the current folder nor the environment tells what a class's code is.
    if (!where.path.starts_with(u'/')) return HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME);
    auto found = findInUse(where.path);
    if (found == nullptr) {
        auto fresh = ModulePointer(new (std::nothrow) ClassModule);
        if (fresh == nullptr) {
            endLoading(where.path, nullptr);
            return E_OUTOFMEMORY;
        }
        HRESULT const result = load(where, *fresh);
        found = endLoading(where.path, FAILED(result) ? nullptr : fresh);
        if (found == nullptr) return result;
        // The module's own start-up was faster: this reference is one too many.
        if (found != fresh) FreeLibrary(fresh->handle);
    }
    use = ClassModuleUse(std::move(found));
    return S_OK;
}

void freeUnusedClassModules(std::chrono::milliseconds delay) noexcept {
    // Without memory the modules stay.
    static_cast<void>(guarded([&] {
        for (auto const& candidate : takeCandidates()) {
            bool const saysYes = candidate.module->canUnloadNow() == S_OK;
            if (takeOut(candidate, saysYes, delay)) FreeLibrary(candidate.module->handle);
        }
    }));
}

}  // namespace velk::platform::com
