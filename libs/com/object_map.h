/// The classes that a module offers.
#pragma once

#include <atomic>
#include <cstdint>

#include "com/create.h"

namespace velk::com {

/// One component category of a class.
struct CategoryEntry {
    GUID const* category;  ///< null ends a list
    bool required;         ///< the class requires it of its container; else it implements it
};

/// One class of the module. Only the cached class object ever changes.
struct ObjectMapEntry {
    CLSID const* classId;
    /// Resource of type "REGISTRY" with the class's registry script; 0 for none.
    WORD registryScript;
    /// Null when the class cannot be created from outside.
    ClassObjectMaker makeClassObject;
    InstanceMaker makeInstance;
    /// List that ends with a null category, or null.
    CategoryEntry const* categories = nullptr;
    /// Called with true when the module starts and false when it ends, or null.
    void (*objectMain)(bool starting) noexcept = nullptr;
    /// The class object, encoded, once it was asked for; 0 before.
    std::atomic<std::uintptr_t> cachedClassObject{0};
};

}  // namespace velk::com
