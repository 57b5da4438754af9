#include "platform/com/class_modules.h"

#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include <winbase.h>

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
};

Modules& modules() {
    static auto& all = *new Modules;
    return all;
}

template <typename Function>
Function exported(HMODULE module, char const* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

/// The module of a path, counted as in use; null when it is not loaded.
ModulePointer findInUse(std::u16string const& path) {
    std::lock_guard const guard(modules().lock);
    auto const found = modules().byPath.find(path);
    if (found == modules().byPath.end()) return nullptr;
    found->second->countUse();
    return found->second;
}

/// Loads without a lock, since loading runs the module's own start-up.
HRESULT load(ModuleOfClass const& where, ClassModule& module) {
    module.handle = LoadLibraryW(where.path.c_str());
    if (module.handle == nullptr) return HRESULT_FROM_WIN32(GetLastError());
    module.getClassObject =
        exported<decltype(&DllGetClassObject)>(module.handle, "DllGetClassObject");
    module.canUnloadNow = exported<decltype(&DllCanUnloadNow)>(module.handle, "DllCanUnloadNow");
    module.isApartmentThreaded = where.isApartmentThreaded;
    if (module.getClassObject != nullptr) return S_OK;
    FreeLibrary(module.handle);
    return CO_E_ERRORINDLL;
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
    HRESULT const result = module_->getClassObject(id, riid, object);
    if (FAILED(result)) *object = nullptr;
    // A module that claims success owes an object.
    return SUCCEEDED(result) && *object == nullptr ? E_NOINTERFACE : result;
}

HRESULT useClassModule(ModuleOfClass const& where, ClassModuleUse& use) {
    auto found = findInUse(where.path);
    if (found == nullptr) {
        auto fresh = std::make_shared<ClassModule>();
        if (HRESULT const result = load(where, *fresh); FAILED(result)) return result;
        {
            std::lock_guard const guard(modules().lock);
            found = modules().byPath.try_emplace(where.path, fresh).first->second;
            found->countUse();
        }
        // Another thread was faster: this one's reference is one too many.
        if (found != fresh) FreeLibrary(fresh->handle);
    }
    use = ClassModuleUse(std::move(found));
    return S_OK;
}

void freeUnusedClassModules(std::chrono::milliseconds delay) {
    for (auto const& candidate : takeCandidates()) {
        bool const saysYes = candidate.module->canUnloadNow() == S_OK;
        if (takeOut(candidate, saysYes, delay)) FreeLibrary(candidate.module->handle);
    }
}

void freeAllClassModules() {
    freeUnusedClassModules(std::chrono::milliseconds(0));
}

}  // namespace velk::platform::com
