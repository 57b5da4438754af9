/// Which interfaces an object answers for.
#pragma once

#include <span>

#include <objbase.h>

namespace velk::com {

/// One interface of `Class`: its id, and the way from the object to it.
template <typename Class>
struct InterfaceEntry {
    IID const* id;
    IUnknown* (*from)(Class* object) noexcept;
};

/// The entry of an interface that `Class` derives from.
template <typename Class, typename Interface>
InterfaceEntry<Class> interfaceEntry(IID const& id) noexcept {
    return {&id,
            [](Class* object) noexcept -> IUnknown* { return static_cast<Interface*>(object); }};
}

/// Looks `id` up in `entries` and hands the interface out with a reference.
/// IID_IUnknown is answered with the first entry, whichever id was used to
/// reach the object, so that it is the same pointer every time.
/// E_POINTER for a null `out`; E_NOINTERFACE, and null in `out`, for the rest.
template <typename Class>
HRESULT queryInterfaceMap(Class* object, std::span<InterfaceEntry<Class> const> entries, REFIID id,
                          void** out) noexcept {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    for (auto const& entry : entries) {
        if (!IsEqualGUID(id, IID_IUnknown) && !IsEqualGUID(id, *entry.id)) continue;
        IUnknown* const found = entry.from(object);
        found->AddRef();
        *out = found;
        return S_OK;
    }
    return E_NOINTERFACE;
}

}  // namespace velk::com

/// Gives a class its interface map: the class, then one VELK_COM_INTERFACE an
/// interface, its own main interface first. IUnknown needs no entry.
#define VELK_COM_MAP(Class, ...)                                                         \
    static std::span<::velk::com::InterfaceEntry<Class> const> interfaceMap() noexcept { \
        using MappedClass = Class;                                                       \
        static ::velk::com::InterfaceEntry<Class> const entries[] = {__VA_ARGS__};       \
        return entries;                                                                  \
    }
#define VELK_COM_INTERFACE(Interface, id) ::velk::com::interfaceEntry<MappedClass, Interface>(id)
