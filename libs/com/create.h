/// How objects come into being, half-made ones included.
#pragma once

#include <memory>
#include <new>

#include <objbase.h>

#include "com/error.h"

namespace velk::com {

/// Makes an object, aggregated where `outer` is not null, and asks it for an
/// interface.
using InstanceMaker = HRESULT (*)(IUnknown* outer, REFIID id, void** out) noexcept;

/// Makes the class object for an instance maker and asks it for an interface.
using ClassObjectMaker = HRESULT (*)(InstanceMaker instances, REFIID id, void** out) noexcept;

/// The second step of construction: the lock, then finalConstruct under a
/// reference, so that what it does with the object cannot destroy it.
template <typename Object>
HRESULT constructObject(Object& object) noexcept {
    try {
        HRESULT const made = object.initialiseSection();
        if (FAILED(made)) return made;
        object.addReference();
        HRESULT const constructed = object.finalConstruct();
        object.releaseReference();
        return constructed;
    }
    VELK_COM_CATCH
}

/// Makes an object with no reference yet. E_OUTOFMEMORY when it cannot be
/// allocated; otherwise the failure of its construction, after which nothing
/// of it is left, the module lock included, and `out` is null.
template <typename Object>
HRESULT newObject(IUnknown* outer, Object*& out) noexcept {
    out = nullptr;
    try {
        std::unique_ptr<Object> object(new (std::nothrow) Object(outer));
        if (!object) return E_OUTOFMEMORY;
        HRESULT const code = object->construct();
        if (FAILED(code)) return code;
        out = object.release();
        return S_OK;
    }
    VELK_COM_CATCH
}

/// The instance maker of one concrete class: the interface asked for holds
/// the new object's first reference. E_POINTER for a null `out`.
template <typename Object>
HRESULT createObject(IUnknown* outer, REFIID id, void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    Object* made = nullptr;
    HRESULT code = newObject(outer, made);
    if (FAILED(code)) return code;
    std::unique_ptr<Object> object(made);
    code = object->QueryInterface(id, out);
    if (SUCCEEDED(code)) static_cast<void>(object.release());
    return code;
}

}  // namespace velk::com
