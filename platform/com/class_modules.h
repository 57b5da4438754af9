/// Modules that hold classes: loaded on demand, kept, and freed when idle.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <objbase.h>

#include "platform/com/identifiers.h"

namespace velk::platform::com {

struct ClassModule;

/// A class module in use; it cannot be unloaded meanwhile. No lock is held.
class ClassModuleUse {
  public:
    ClassModuleUse() = default;
    explicit ClassModuleUse(std::shared_ptr<ClassModule> module) : module_(std::move(module)) {}
    ClassModuleUse(ClassModuleUse&&) noexcept = default;
    ClassModuleUse& operator=(ClassModuleUse&& other) noexcept {
        module_.swap(other.module_);
        return *this;
    }
    ~ClassModuleUse();

    /// Asks the module for a class object.
    HRESULT classObject(REFCLSID id, REFIID riid, void** object) const;

  private:
    std::shared_ptr<ClassModule> module_;
};

/// Loads a class's module, unless it is loaded already. Fails with the
/// system's error for a file that cannot be loaded, ERROR_BAD_PATHNAME for what
/// is no absolute path among them, and with CO_E_ERRORINDLL for one that holds
/// no classes. Thread-safe.
HRESULT useClassModule(ModuleOfClass const& where, ClassModuleUse& use);

/// Unloads the modules that say that they can go. One that other threads have
/// used, or may use, must have said so for at least `delay`. Thread-safe.
void freeUnusedClassModules(std::chrono::milliseconds delay) noexcept;

}  // namespace velk::platform::com
