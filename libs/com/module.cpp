#include "com/module.h"

#include <mutex>
#include <new>

#include "com/com_ptr.h"
#include "com/encoded_pointer.h"
#include "com/error.h"

namespace velk::com {
namespace {

std::atomic<DllModule*> theModule{nullptr};

}  // namespace

void lockModule() noexcept {
    if (DllModule* module = theModule) module->Lock();
}

void unlockModule() noexcept {
    if (DllModule* module = theModule) module->Unlock();
}

DllModule* currentModule() noexcept {
    return theModule;
}

ComModuleRecord::ComModuleRecord(std::span<ObjectMapEntry> objects) noexcept
    : objects_(objects), initialised_(SUCCEEDED(section_.initialise())) {}

ComModuleRecord::~ComModuleRecord() {
    for (auto& entry : objects_) {
        std::uintptr_t const cached = entry.cachedClassObject.exchange(0);
        ComPtr<IUnknown>(static_cast<IUnknown*>(decodePointer(cached)), adopt).reset();
    }
}

HRESULT ComModuleRecord::cacheClassObject(ObjectMapEntry& entry) noexcept {
    try {
        std::lock_guard<CriticalSection> const guard(section_);
        if (entry.cachedClassObject != 0) return S_OK;
        ComPtr<IUnknown> made;
        HRESULT const code =
            entry.makeClassObject(entry.makeInstance, IID_IUnknown, made.putVoid());
        if (SUCCEEDED(code)) entry.cachedClassObject = encodePointer(made.detach());
        return code;
    }
    VELK_COM_CATCH
}

HRESULT ComModuleRecord::getClassObject(REFCLSID classId, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (!initialised()) return E_UNEXPECTED;
    for (auto& entry : objects_) {
        if (entry.makeClassObject == nullptr || !IsEqualGUID(classId, *entry.classId)) continue;
        HRESULT code = S_OK;
        if (entry.cachedClassObject == 0) code = cacheClassObject(entry);
        if (std::uintptr_t const cached = entry.cachedClassObject) {
            code = static_cast<IUnknown*>(decodePointer(cached))->QueryInterface(id, out);
        }
        if (*out == nullptr && code == S_OK) code = CLASS_E_CLASSNOTAVAILABLE;
        return code;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

DllModule::DllModule(ComModuleRecord& record, GUID const& libraryId) noexcept
    : record_(record), libraryId_(libraryId) {
    theModule = this;
    tellClasses(true);
}

DllModule::~DllModule() {
    tellClasses(false);
    // A term function may add another one, which then runs too.
    while (!termFunctions_.empty()) {
        auto const [function, data] = termFunctions_.back();
        termFunctions_.pop_back();
        function(data);
    }
    ComPtr<IGlobalInterfaceTable>(globalInterfaces_.exchange(nullptr), adopt).reset();
    record_.markUninitialised();
    theModule = nullptr;
}

void DllModule::tellClasses(bool starting) noexcept {
    for (auto const& entry : record_.objects()) {
        if (entry.objectMain != nullptr) entry.objectMain(starting);
    }
}

HRESULT DllModule::addTermFunction(void (*function)(void*) noexcept, void* data) noexcept {
    try {
        std::lock_guard<CriticalSection> const guard(record_.section());
        termFunctions_.emplace_back(function, data);
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT DllModule::GetGITPtr(IGlobalInterfaceTable** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (globalInterfaces_ == nullptr) {
        ComPtr<IGlobalInterfaceTable> made;
        HRESULT const code =
            CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                             IID_IGlobalInterfaceTable, made.putVoid());
        if (FAILED(code)) return code;
        IGlobalInterfaceTable* none = nullptr;
        // Another thread may have been faster: then its reference is kept.
        if (globalInterfaces_.compare_exchange_strong(none, made.get())) {
            static_cast<void>(made.detach());
        }
    }
    *out = ComPtr<IGlobalInterfaceTable>(globalInterfaces_).copy();
    return S_OK;
}

HMODULE moduleHandle() {
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCWSTR>(&theModule), &module)) {
        throwIfError(static_cast<LSTATUS>(GetLastError()), "cannot find this module");
        throw Error(E_UNEXPECTED, "cannot find this module");
    }
    return module;
}

std::basic_string<OLECHAR> modulePath(HMODULE module) {
    OLECHAR path[MAX_PATH];
    DWORD const length = GetModuleFileNameW(module, path, MAX_PATH);
    if (length == 0) {
        throwIfError(static_cast<LSTATUS>(GetLastError()), "cannot read the module's path");
        throw Error(E_UNEXPECTED, "cannot read the module's path");
    }
    // A path that was cut fills the buffer.
    if (length >= MAX_PATH) {
        throwIfError(ERROR_INSUFFICIENT_BUFFER, "the module's path is too long");
    }
    return {path, length};
}

}  // namespace velk::com
