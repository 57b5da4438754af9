/// What exists once per loaded module.
#pragma once

#include <atomic>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "com/critical_section.h"
#include "com/module_lock.h"
#include "com/object_map.h"

namespace velk::com {

class Registrar;

/// The module's record of its classes: lives longer than the DllModule, and
/// gives back the cached class objects when it ends.
class ComModuleRecord {
  public:
    /// `objects` must outlive the record. If the record's lock cannot be made
    /// the record stays uninitialised.
    explicit ComModuleRecord(std::span<ObjectMapEntry> objects) noexcept;
    ~ComModuleRecord();
    ComModuleRecord(ComModuleRecord const&) = delete;
    ComModuleRecord& operator=(ComModuleRecord const&) = delete;

    /// False once the module has ended, or when it could not be started.
    bool initialised() const noexcept { return initialised_; }
    void markUninitialised() noexcept { initialised_ = false; }

    std::span<ObjectMapEntry> objects() const noexcept { return objects_; }
    CriticalSection& section() noexcept { return section_; }

    /// Gives the class object of `classId`, made on first use and kept, as the
    /// interface `id`. E_POINTER for a null `out`; E_UNEXPECTED when the
    /// record is not initialised; CLASS_E_CLASSNOTAVAILABLE for an unknown
    /// class; otherwise what its creation or its QueryInterface answers.
    /// Thread-safe: all callers get the same class object.
    HRESULT getClassObject(REFCLSID classId, REFIID id, void** out) noexcept;

  private:
    HRESULT cacheClassObject(ObjectMapEntry& entry) noexcept;

    std::span<ObjectMapEntry> objects_;
    CriticalSection section_;
    std::atomic<bool> initialised_;
};

/// The module itself. One lives per loaded module at a time; while it does,
/// objects and factory locks count in it.
class DllModule : public ModuleLockCount {
  public:
    /// Records itself as this module's object and tells each class of the
    /// record that the module starts. `record` and `libraryId` must outlive it.
    DllModule(ComModuleRecord& record, GUID const& libraryId) noexcept;
    /// Tells each class that the module ends, runs the term functions, last
    /// added first, and marks the record uninitialised.
    ~DllModule() override;
    DllModule(DllModule const&) = delete;
    DllModule& operator=(DllModule const&) = delete;

    LONG Lock() noexcept override { return ++locks_; }
    LONG Unlock() noexcept override { return --locks_; }
    LONG GetLockCount() noexcept override { return locks_; }

    /// Adds the replacements that every registry script of the module can use.
    virtual void AddCommonRGSReplacements(Registrar& registrar) = 0;

    /// The answers of the exported functions of the same names.
    HRESULT getClassObject(REFCLSID classId, REFIID id, void** out) noexcept {
        return record_.getClassObject(classId, id, out);
    }
    HRESULT canUnloadNow() noexcept { return GetLockCount() == 0 ? S_OK : S_FALSE; }

    /// Hands out the process's table of global interfaces with a reference of
    /// the caller's. Made on first use and kept until the module ends; a
    /// failure is not remembered. E_POINTER for a null `out`, otherwise what
    /// CoCreateInstance answers. Thread-safe.
    HRESULT GetGITPtr(IGlobalInterfaceTable** out) noexcept;

    GUID const& libraryId() const noexcept { return libraryId_; }
    ComModuleRecord& record() noexcept { return record_; }

    /// Has `function` called with `data` when the module ends. Fails with
    /// E_OUTOFMEMORY only. Thread-safe.
    HRESULT addTermFunction(void (*function)(void* data) noexcept, void* data) noexcept;

    /// Registers (or, with `install` false, unregisters) the script in
    /// resource `script` with the replacements MODULE, MODULE_RAW and those of
    /// AddCommonRGSReplacements. `perUser` places classes under the current
    /// user. Throws Error.
    void updateRegistry(WORD script, bool install, bool perUser);

    /// Registers a class: its script, then its component categories; or
    /// unregisters them in the reverse order. Throws Error.
    void updateClass(ObjectMapEntry const& entry, bool install, bool perUser);

  private:
    void tellClasses(bool starting) noexcept;

    ComModuleRecord& record_;
    GUID const& libraryId_;
    std::atomic<LONG> locks_{0};
    std::vector<std::pair<void (*)(void*) noexcept, void*>> termFunctions_;
    std::atomic<IGlobalInterfaceTable*> globalInterfaces_{nullptr};
};

/// This module's object; null before it is made and after it ended.
DllModule* currentModule() noexcept;

/// The handle of the module that this code is part of. Throws Error.
HMODULE moduleHandle();

/// The full path of the file of `module`. Throws Error with the system's
/// error, or ERROR_INSUFFICIENT_BUFFER when it has 260 characters or more.
std::basic_string<OLECHAR> modulePath(HMODULE module);

}  // namespace velk::com
