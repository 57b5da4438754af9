#include "platform/typelib/created_library.h"

#include "platform/typelib/created_type.h"
#include "platform/typelib/library_source.h"
#include "platform/typelib/type_info.h"

namespace velk::typelib {

Reference<TypeLibrary> CreatedLibrary::create(SYSKIND system) {
    auto made = std::make_unique<LibraryModel>();
    auto& model = *made;
    model.system = system;
    auto library = TypeLibrary::create(std::move(made));
    library->attach(std::make_unique<CreatedLibrary>(*library, model));
    return library;
}

CreatedLibrary::CreatedLibrary(TypeLibrary& library, LibraryModel& model)
    : library_(library), model_(model), copies_(library, model) {}

IUnknown* CreatedLibrary::editingInterface(REFIID riid) noexcept {
    bool const known = riid == IID_ICreateTypeLib || riid == IID_ICreateTypeLib2;
    return known ? static_cast<ICreateTypeLib2*>(this) : nullptr;
}

HRESULT CreatedLibrary::QueryInterface(REFIID riid, void** object) noexcept {
    return library_.QueryInterface(riid, object);
}

ULONG CreatedLibrary::AddRef() noexcept {
    return library_.AddRef();
}

ULONG CreatedLibrary::Release() noexcept {
    return library_.Release();
}

TypeModel* CreatedLibrary::typeNamed(Text name) {
    for (auto& type : model_.types) {
        if (!type.deleted && sameName(type.name, name)) return &type;
    }
    return nullptr;
}

Text CreatedLibrary::typeName(LPOLESTR name, TypeModel const* self) {
    require(name, E_INVALIDARG);
    auto const* const other = typeNamed(name);
    require(!other || other == self, TYPE_E_NAMECONFLICT);
    return copies_.text(name);
}

void CreatedLibrary::needDispatch() {
    if (model_.dispatchReference != noReference) return;
    auto const standard = standardTypes();
    auto const place = standard->index().identified(IID_IDispatch);
    model_.dispatchReference =
        library_.borrow(*standard, makeReference(ReferenceKind::local, place));
}

HRESULT CreatedLibrary::CreateTypeInfo(LPOLESTR name, TYPEKIND kind,
                                       ICreateTypeInfo** out) noexcept {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    if (kind < 0 || kind >= TKIND_MAX) return E_INVALIDARG;
    return guarded([&] {
        Text const kept = typeName(name, nullptr);
        if (kind == TKIND_DISPATCH) needDispatch();
        auto& model = model_.types.emplace_back();
        TypeInfo* info = nullptr;
        try {
            info = &library_.showNextType();
        } catch (...) {
            model_.types.pop_back();
            throw;
        }
        // Whatever fails from here on leaves a type that was never there.
        model.deleted = true;
        model.name = kept;
        auto editor = std::make_unique<CreatedType>(*this, *info, model, kind);
        *out = editor.get();
        info->attach(std::move(editor));
        model.deleted = false;
        library_.forgetIndex();
        (*out)->AddRef();
    });
}

HRESULT CreatedLibrary::DeleteTypeInfo(LPOLESTR name) noexcept {
    if (!name) return E_INVALIDARG;
    auto* const type = typeNamed(name);
    if (!type) return TYPE_E_ELEMENTNOTFOUND;
    return guarded([&] {
        library_.forgetIndex();
        type->deleted = true;
    });
}

HRESULT CreatedLibrary::SetName(LPOLESTR name) noexcept {
    return guarded([&] { model_.name = copies_.text(name); });
}

HRESULT CreatedLibrary::SetVersion(WORD major, WORD minor) noexcept {
    model_.majorVersion = major;
    model_.minorVersion = minor;
    return S_OK;
}

HRESULT CreatedLibrary::SetGuid(REFGUID id) noexcept {
    model_.id = id;
    return S_OK;
}

HRESULT CreatedLibrary::SetDocString(LPOLESTR text) noexcept {
    return guarded([&] { model_.documentation.help = copies_.text(text); });
}

HRESULT CreatedLibrary::SetHelpFileName(LPOLESTR file) noexcept {
    return guarded([&] { model_.helpFile = copies_.text(file); });
}

HRESULT CreatedLibrary::SetHelpContext(DWORD context) noexcept {
    model_.documentation.context = context;
    return S_OK;
}

HRESULT CreatedLibrary::SetLcid(LCID lcid) noexcept {
    model_.lcid = lcid;
    return S_OK;
}

HRESULT CreatedLibrary::SetLibFlags(UINT flags) noexcept {
    model_.flags = static_cast<WORD>(flags & ~UINT{LIBFLAG_FHASDISKIMAGE});
    return S_OK;
}

HRESULT CreatedLibrary::SaveAllChanges() noexcept {
    return TYPE_E_IOERROR;
}

HRESULT CreatedLibrary::SetCustData(REFGUID id, VARIANT* value) noexcept {
    return guarded([&] { model_.custom = copies_.withItem(model_.custom, id, value); });
}

HRESULT CreatedLibrary::SetHelpStringContext(ULONG context) noexcept {
    model_.documentation.stringContext = context;
    return S_OK;
}

HRESULT CreatedLibrary::SetHelpStringDll(LPOLESTR file) noexcept {
    return guarded([&] { model_.helpModule = copies_.text(file); });
}

}  // namespace velk::typelib

HRESULT CreateTypeLib2(SYSKIND system, LPCOLESTR file, ICreateTypeLib2** library) {
    if (!library) return E_INVALIDARG;
    *library = nullptr;
    if (!file || system < SYS_WIN16 || system > SYS_WIN64) return E_INVALIDARG;
    using namespace velk::typelib;
    return guarded([&] {
        return CreatedLibrary::create(system)->QueryInterface(IID_ICreateTypeLib2,
                                                              reinterpret_cast<void**>(library));
    });
}

HRESULT CreateTypeLib(SYSKIND system, LPCOLESTR file, ICreateTypeLib** library) {
    if (!library) return E_INVALIDARG;
    *library = nullptr;
    ICreateTypeLib2* made = nullptr;
    HRESULT const result = CreateTypeLib2(system, file, &made);
    *library = made;
    return result;
}
