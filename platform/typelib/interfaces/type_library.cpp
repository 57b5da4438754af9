#include "platform/typelib/interfaces/type_library.h"

#include <algorithm>

#include "platform/system/live_counts.h"
#include "platform/typelib/interfaces/descriptions.h"
#include "platform/typelib/interfaces/type_info.h"
#include "platform/typelib/loading/library_source.h"

namespace velk::typelib {
Reference<TypeLibrary> TypeLibrary::create(std::unique_ptr<LibraryModel const> model,
                                           std::u16string path) {
    return Reference<TypeLibrary>::adopt(new TypeLibrary(std::move(model), std::move(path)));
}

TypeLibrary::TypeLibrary(std::unique_ptr<LibraryModel const> model, std::u16string path)
    : model_(std::move(model)),
      path_(std::move(path)),
      imported_(model_->importedLibraries.size()) {
    for (auto const& type : model_->types) {
        auto const place = types_.size();
        auto const usual = type.dual() ? View::dispatch : View::plain;
        types_.push_back(std::make_unique<TypeInfo>(*this, type, place, usual));
        otherViews_.push_back(
            type.dual() ? std::make_unique<TypeInfo>(*this, type, place, View::vtable) : nullptr);
    }
    platform::countLive(VELK_LIVE_TYPE_LIBRARY, 1);
}

TypeLibrary::~TypeLibrary() {
    forgetLibrary(this);
    platform::countLive(VELK_LIVE_TYPE_LIBRARY, -1);
}

LibraryIndex const& TypeLibrary::index() const {
    return index_.get([this] { return LibraryIndex(*model_); });
}

HRESULT TypeLibrary::QueryInterface(REFIID riid, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (riid == IID_IUnknown || riid == IID_ITypeLib || riid == IID_ITypeLib2) {
        *object = static_cast<ITypeLib2*>(this);
    } else {
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG TypeLibrary::AddRef() noexcept {
    return references_.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool TypeLibrary::tryAddRef() {
    ULONG known = references_.load(std::memory_order_relaxed);
    while (known != 0) {
        if (references_.compare_exchange_weak(known, known + 1)) return true;
    }
    return false;
}

ULONG TypeLibrary::Release() noexcept {
    ULONG const left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
}

UINT TypeLibrary::GetTypeInfoCount() noexcept {
    return static_cast<UINT>(types_.size());
}

HRESULT TypeLibrary::GetTypeInfo(UINT index, ITypeInfo** out) noexcept {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    return guarded([&] { *out = type(index).release(); });
}

HRESULT TypeLibrary::GetTypeInfoType(UINT index, TYPEKIND* kind) noexcept {
    if (!kind) return E_INVALIDARG;
    return guarded([&] { *kind = type(index)->kind(); });
}

HRESULT TypeLibrary::GetTypeInfoOfGuid(REFGUID id, ITypeInfo** out) noexcept {
    if (!out) return E_INVALIDARG;
    *out = nullptr;
    return guarded([&] { *out = type(index().identified(id)).release(); });
}

HRESULT TypeLibrary::GetLibAttr(TLIBATTR** attributes) noexcept {
    if (!attributes) return E_INVALIDARG;
    *attributes = nullptr;
    return guarded([&] {
        auto description = std::make_unique<Description<TLIBATTR>>();
        description->guid = model_->id;
        description->lcid = model_->lcid;
        description->syskind = model_->system;
        description->wMajorVerNum = model_->majorVersion;
        description->wMinorVerNum = model_->minorVersion;
        description->wLibFlags = model_->flags | LIBFLAG_FHASDISKIMAGE;
        *attributes = description.release();
    });
}

void TypeLibrary::ReleaseTLibAttr(TLIBATTR* attributes) noexcept {
    giveBack(attributes);
}

HRESULT TypeLibrary::GetDocumentation(INT index, BSTR* name, BSTR* help, DWORD* context,
                                      BSTR* helpFile) noexcept {
    return guarded([&] {
        if (index >= 0) {
            return type(static_cast<std::size_t>(index))
                ->GetDocumentation(MEMBERID_NIL, name, help, context, helpFile);
        }
        require(index == -1, TYPE_E_ELEMENTNOTFOUND);
        Bstr nameText = name ? optionalText(model_->name) : Bstr();
        Bstr helpText = help ? optionalText(model_->documentation.help) : Bstr();
        Bstr fileText = helpFile ? optionalText(model_->helpFile) : Bstr();
        if (name) *name = nameText.release();
        if (help) *help = helpText.release();
        if (context) *context = model_->documentation.context;
        if (helpFile) *helpFile = fileText.release();
        return S_OK;
    });
}

HRESULT TypeLibrary::GetDocumentation2(INT index, LCID lcid, BSTR* help, DWORD* context,
                                       BSTR* module) noexcept {
    return guarded([&] {
        if (index >= 0) {
            return type(static_cast<std::size_t>(index))
                ->GetDocumentation2(MEMBERID_NIL, lcid, help, context, module);
        }
        require(index == -1, TYPE_E_ELEMENTNOTFOUND);
        Bstr helpText = help ? optionalText(model_->documentation.help) : Bstr();
        Bstr moduleText = module ? optionalText(model_->helpModule) : Bstr();
        if (help) *help = helpText.release();
        if (context) *context = model_->documentation.stringContext;
        if (module) *module = moduleText.release();
        return S_OK;
    });
}

HRESULT TypeLibrary::FindName(LPOLESTR name, ULONG, ITypeInfo** types, MEMBERID* members,
                              USHORT* count) noexcept {
    if (!name || !types || !members || !count) return E_INVALIDARG;
    return guarded([&] {
        auto const& places = index().named(folded(name));
        USHORT found = 0;
        for (std::size_t i = 0; i < places.size() && found < *count; ++i) {
            // A type is found once, by its own name before those of its members.
            if (i > 0 && places[i].type == places[i - 1].type) continue;
            types[found] = type(places[i].type).release();
            members[found] = places[i].member;
            ++found;
        }
        if (found > 0) std::copy(places[0].spelling.begin(), places[0].spelling.end(), name);
        *count = found;
    });
}

HRESULT TypeLibrary::GetAllCustData(CUSTDATA* data) noexcept {
    return guarded([&] { return copyCustomData(model_->custom, data); });
}

}  // namespace velk::typelib
