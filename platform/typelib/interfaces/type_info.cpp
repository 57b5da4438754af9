#include "platform/typelib/interfaces/type_info.h"

#include "platform/typelib/interfaces/descriptions.h"

namespace velk::typelib {
namespace {

// Asks an object of unknown origin whether it is a TypeInfo; no interface.
constexpr GUID ownClass = {
    0x8F0B6C4E, 0x2D57, 0x4A9B, {0xB1, 0x36, 0x5E, 0x70, 0xC9, 0x14, 0xD8, 0x2A}};

}  // namespace

TypeInfo::TypeInfo(TypeLibrary& library, TypeModel const& model, std::size_t index, View view)
    : library_(library), model_(model), index_(index), view_(view) {
    if (model.kind == TKIND_RECORD && model.id == GUID_NULL) {
        record_ = std::make_unique<LoadedRecord>(*this);
    }
}

HRESULT TypeInfo::QueryInterface(REFIID riid, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid == IID_IUnknown || riid == IID_ITypeInfo || riid == IID_ITypeInfo2) {
        *object = static_cast<ITypeInfo2*>(this);
    } else if (riid == ownClass) {
        *object = this;
    } else if (record_ && riid == IID_ICreateTypeInfo) {
        *object = static_cast<ICreateTypeInfo*>(record_.get());
    }
    if (!*object) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

// The first reference keeps the library alive, the last one lets it go. A
// thread that comes between the two has a reference to the library of its own.
ULONG TypeInfo::AddRef() noexcept {
    ULONG const count = references_.fetch_add(1, std::memory_order_acq_rel) + 1;
    if (count == 1) library_.AddRef();
    return count;
}

ULONG TypeInfo::Release() noexcept {
    auto& library = library_;
    ULONG const left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) library.Release();
    return left;
}

HRESULT TypeInfo::GetContainingTypeLib(ITypeLib** library, UINT* index) noexcept {
    if (!library && !index) return E_INVALIDARG;
    if (index) *index = static_cast<UINT>(index_);
    if (library) {
        *library = &library_;
        library_.AddRef();
    }
    return S_OK;
}

HRESULT TypeInfo::GetRefTypeInfo(HREFTYPE reference, ITypeInfo** type) noexcept {
    if (!type) return E_INVALIDARG;
    *type = nullptr;
    return guarded([&] { *type = library_.resolve(reference).release(); });
}

ImplementedModel TypeInfo::implementedAt(UINT index) const {
    // Whatever a dual interface derives from, what it implements for
    // automation is IDispatch.
    bool const dispatch = view_ == View::dispatch;
    if (dispatch && index == 0 && library_.model().dispatchReference != noReference) {
        ImplementedModel entry;
        entry.reference = library_.model().dispatchReference;
        return entry;
    }
    require(index < model_.implemented.size(), TYPE_E_ELEMENTNOTFOUND);
    ImplementedModel entry = model_.implemented[index];
    if (view_ == View::vtable) entry.reference = library_.vtableReference(entry.reference);
    return entry;
}

HRESULT TypeInfo::GetRefTypeOfImplType(UINT index, HREFTYPE* reference) noexcept {
    if (!reference) return E_INVALIDARG;
    // -1 asks for the other view of a dual interface.
    if (index == static_cast<UINT>(-1)) {
        if (view_ == View::plain) return TYPE_E_ELEMENTNOTFOUND;
        *reference = makeReference(
            view_ == View::dispatch ? ReferenceKind::otherView : ReferenceKind::local, index_);
        return S_OK;
    }
    return guarded([&] { *reference = implementedAt(index).reference; });
}

HREFTYPE TypeInfo::ownReference() const {
    return makeReference(view_ == View::vtable ? ReferenceKind::otherView : ReferenceKind::local,
                         index_);
}

Reference<TypeInfo> TypeInfo::own(ITypeInfo& type) {
    void* found = nullptr;
    if (FAILED(type.QueryInterface(ownClass, &found))) return {};
    return Reference<TypeInfo>::adopt(static_cast<TypeInfo*>(found));
}

HRESULT TypeInfo::GetImplTypeFlags(UINT index, INT* flags) noexcept {
    if (!flags) return E_INVALIDARG;
    return guarded([&] { *flags = implementedAt(index).flags; });
}

HRESULT TypeInfo::GetAllCustData(CUSTDATA* data) noexcept {
    return guarded([&] { return copyCustomData(model_.custom, data); });
}

CustomData TypeInfo::functionCustomData(UINT index) {
    return functionAt(index).model->custom;
}

CustomData TypeInfo::parameterCustomData(UINT function, UINT parameter) {
    auto const place = functionAt(function);
    require(parameter < place.model->parameters.size(), TYPE_E_ELEMENTNOTFOUND);
    return place.model->parameters[parameter].custom;
}

HRESULT TypeInfo::GetAllFuncCustData(UINT index, CUSTDATA* data) noexcept {
    return guarded([&] { return copyCustomData(functionCustomData(index), data); });
}

HRESULT TypeInfo::GetAllParamCustData(UINT function, UINT parameter, CUSTDATA* data) noexcept {
    return guarded([&] { return copyCustomData(parameterCustomData(function, parameter), data); });
}

HRESULT TypeInfo::GetAllVarCustData(UINT index, CUSTDATA* data) noexcept {
    if (index >= model_.variables.size()) return TYPE_E_ELEMENTNOTFOUND;
    return guarded([&] { return copyCustomData(model_.variables[index].custom, data); });
}

HRESULT TypeInfo::GetAllImplTypeCustData(UINT index, CUSTDATA* data) noexcept {
    return guarded([&] { return copyCustomData(implementedAt(index).custom, data); });
}

}  // namespace velk::typelib
