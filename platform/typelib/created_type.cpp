// What a type made in memory is as a whole, and what it implements.

#include "platform/typelib/created_type.h"

#include <algorithm>

namespace velk::typelib {
namespace {

constexpr WORD dispatchVtableSize = 7 * sizeof(void*);

// Bases beyond this are taken for a type that derives from itself.
constexpr int deepestBase = 64;

// Fields are packed no closer than the strictest type asks for.
constexpr WORD natural = alignof(VARIANT);

// As compilers of descriptions set them before they know any member.
void initialise(TypeModel& model, TYPEKIND kind) {
    model.kind = kind;
    model.packing = natural;
    switch (kind) {
        case TKIND_ENUM:
            model.instanceSize = sizeof(LONG);
            model.alignment = alignof(LONG);
            break;
        case TKIND_INTERFACE:
            model.instanceSize = sizeof(void*);
            model.alignment = alignof(void*);
            break;
        case TKIND_DISPATCH:
            model.instanceSize = sizeof(void*);
            model.alignment = alignof(void*);
            model.vtableSize = dispatchVtableSize;
            break;
        case TKIND_COCLASS:
            model.instanceSize = sizeof(void*);
            model.alignment = alignof(LONG);
            break;
        case TKIND_MODULE:
            model.instanceSize = sizeof(WORD);
            model.alignment = alignof(LONG);
            break;
        default:
            model.alignment = 1;
            break;
    }
}

}  // namespace

CreatedType::CreatedType(CreatedLibrary& library, TypeInfo& info, TypeModel& model, TYPEKIND kind)
    : library_(library),
      info_(info),
      model_(model),
      kind_(kind),
      place_(library.model().types.size() - 1) {
    initialise(model, kind);
}

IUnknown* CreatedType::editingInterface(REFIID riid) noexcept {
    bool const known = riid == IID_ICreateTypeInfo || riid == IID_ICreateTypeInfo2;
    return known ? static_cast<ICreateTypeInfo2*>(this) : nullptr;
}

HRESULT CreatedType::QueryInterface(REFIID riid, void** object) noexcept {
    return info_.QueryInterface(riid, object);
}

ULONG CreatedType::AddRef() noexcept {
    return info_.AddRef();
}

ULONG CreatedType::Release() noexcept {
    return info_.Release();
}

HRESULT CreatedType::SetName(LPOLESTR name) noexcept {
    return guarded([&] {
        model_.name = library_.typeName(name, &model_);
        library_.library().forgetIndex();
    });
}

HRESULT CreatedType::SetGuid(REFGUID id) noexcept {
    return guarded([&] {
        library_.library().forgetIndex();
        model_.id = id;
    });
}

HRESULT CreatedType::SetTypeFlags(UINT flags) noexcept {
    bool const dual = flags & TYPEFLAG_FDUAL;
    if (dual && kind_ != TKIND_INTERFACE) return TYPE_E_BADMODULEKIND;
    return guarded([&] {
        if (dual) library_.needDispatch();
        model_.flags = static_cast<WORD>(flags);
        model_.kind = dual ? TKIND_DISPATCH : kind_;
        model_.vtableFirst = dual;
        library_.library().updateViews(place_);
        layOutMembers();
    });
}

HRESULT CreatedType::SetDocString(LPOLESTR text) noexcept {
    return guarded([&] { model_.documentation.help = library_.copies().text(text); });
}

HRESULT CreatedType::SetHelpContext(DWORD context) noexcept {
    model_.documentation.context = context;
    return S_OK;
}

HRESULT CreatedType::SetHelpStringContext(ULONG context) noexcept {
    model_.documentation.stringContext = context;
    return S_OK;
}

HRESULT CreatedType::SetVersion(WORD major, WORD minor) noexcept {
    model_.majorVersion = major;
    model_.minorVersion = minor;
    return S_OK;
}

HRESULT CreatedType::SetSchema(LPOLESTR schema) noexcept {
    return guarded([&] { model_.schema = library_.copies().text(schema); });
}

HRESULT CreatedType::SetTypeIdldesc(IDLDESC* description) noexcept {
    if (!description) return E_INVALIDARG;
    model_.idlFlags = description->wIDLFlags;
    return S_OK;
}

HRESULT CreatedType::SetCustData(REFGUID id, VARIANT* value) noexcept {
    return guarded([&] { model_.custom = library_.copies().withItem(model_.custom, id, value); });
}

// 0 stands for the greatest alignment there is, 1 for none.
HRESULT CreatedType::SetAlignment(WORD alignment) noexcept {
    if (alignment & (alignment - 1)) return E_INVALIDARG;
    model_.packing = alignment ? std::min(alignment, natural) : natural;
    return S_OK;
}

HRESULT CreatedType::SetTypeDescAlias(TYPEDESC* type) noexcept {
    if (!type) return E_INVALIDARG;
    if (kind_ != TKIND_ALIAS) return TYPE_E_BADMODULEKIND;
    return guarded([&] { model_.alias = library_.copies().type(*type); });
}

// Types of other implementations have no place in our model.
HRESULT CreatedType::AddRefTypeInfo(ITypeInfo* type, HREFTYPE* reference) noexcept {
    if (!type || !reference) return E_INVALIDARG;
    return guarded([&] {
        auto const target = TypeInfo::own(*type);
        require(bool(target), E_INVALIDARG);
        *reference = library_.library().borrow(target->library(), target->ownReference());
    });
}

void CreatedType::requireImplementable(HREFTYPE reference, UINT index) {
    bool const coclass = kind_ == TKIND_COCLASS;
    bool const derives = kind_ == TKIND_INTERFACE || kind_ == TKIND_DISPATCH;
    require(coclass || derives, TYPE_E_BADMODULEKIND);
    // Added at the end only, and no second base.
    bool const next = index == implemented_.size() && (coclass || index == 0);
    require(next, TYPE_E_ELEMENTNOTFOUND);
    auto target = library_.library().resolve(reference);
    auto const& model = target->model();
    bool const dispatch = model.kind == TKIND_DISPATCH;
    bool const fits = kind_ == TKIND_INTERFACE ? model.dual() : dispatch;
    require(fits || model.kind == TKIND_INTERFACE, TYPE_E_WRONGTYPEKIND);
    if (kind_ != TKIND_INTERFACE) return;
    for (int depth = 0; target; ++depth, target = target->base()) {
        bool const circle = &target->model() == &model_ || depth == deepestBase;
        require(!circle, TYPE_E_CIRCULARTYPE);
    }
}

HRESULT CreatedType::AddImplType(UINT index, HREFTYPE reference) noexcept {
    return guarded([&] {
        requireImplementable(reference, index);
        ImplementedModel entry;
        entry.reference = reference;
        implemented_.push_back(entry);
        implementedChanged();
    });
}

HRESULT CreatedType::DeleteImplType(UINT index) noexcept {
    return guarded([&] {
        require(index < implemented_.size(), TYPE_E_ELEMENTNOTFOUND);
        implemented_.erase(implemented_.begin() + index);
        implementedChanged();
    });
}

void CreatedType::implementedChanged() {
    model_.implemented = implemented_;
    layOutMembers();
}

ImplementedModel& CreatedType::implemented(UINT index) {
    require(index < implemented_.size(), TYPE_E_ELEMENTNOTFOUND);
    return implemented_[index];
}

HRESULT CreatedType::SetImplTypeFlags(UINT index, INT flags) noexcept {
    if (kind_ != TKIND_COCLASS) return TYPE_E_BADMODULEKIND;
    return guarded([&] { implemented(index).flags = flags; });
}

HRESULT CreatedType::SetImplTypeCustData(UINT index, REFGUID id, VARIANT* value) noexcept {
    return guarded([&] {
        auto& entry = implemented(index);
        entry.custom = library_.copies().withItem(entry.custom, id, value);
    });
}

}  // namespace velk::typelib
