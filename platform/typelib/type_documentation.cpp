// Names, help, entry points of members, and making instances.

#include "objbase.h"
#include "platform/typelib/type_info.h"
#include "winbase.h"

namespace velk::typelib {
namespace {

struct MemberTexts {
    Text name;
    Documentation documentation;
};

MemberTexts textsOf(MemberFound const& found) {
    if (found.function) return {found.function->name, found.function->documentation};
    require(found.variable, TYPE_E_ELEMENTNOTFOUND);
    return {found.variable->name, found.variable->documentation};
}

}  // namespace

HRESULT TypeInfo::GetDocumentation(MEMBERID member, BSTR* name, BSTR* help, DWORD* context,
                                   BSTR* helpFile) noexcept {
    return guarded([&] {
        auto const texts = member == MEMBERID_NIL ? MemberTexts{model_.name, model_.documentation}
                                                  : textsOf(findById(member));
        Bstr nameText = name ? optionalText(texts.name) : Bstr();
        Bstr helpText = help ? optionalText(texts.documentation.help) : Bstr();
        Bstr fileText = helpFile ? optionalText(library_.model().helpFile) : Bstr();
        if (name) *name = nameText.release();
        if (help) *help = helpText.release();
        if (context) *context = texts.documentation.context;
        if (helpFile) *helpFile = fileText.release();
    });
}

HRESULT TypeInfo::GetDocumentation2(MEMBERID member, LCID, BSTR* help, DWORD* context,
                                    BSTR* module) noexcept {
    return guarded([&] {
        auto const documentation =
            member == MEMBERID_NIL ? model_.documentation : textsOf(findById(member)).documentation;
        Bstr helpText = help ? optionalText(documentation.help) : Bstr();
        Bstr moduleText = module ? optionalText(library_.model().helpModule) : Bstr();
        if (help) *help = helpText.release();
        if (context) *context = documentation.stringContext;
        if (module) *module = moduleText.release();
    });
}

HRESULT TypeInfo::GetDllEntry(MEMBERID member, INVOKEKIND invocation, BSTR* module, BSTR* name,
                              WORD* ordinal) noexcept {
    if (module) *module = nullptr;
    if (name) *name = nullptr;
    if (ordinal) *ordinal = 0;
    if (model_.kind != TKIND_MODULE) return TYPE_E_BADMODULEKIND;
    return guarded([&] {
        auto const found = findById(member, static_cast<WORD>(invocation));
        require(found.function, TYPE_E_ELEMENTNOTFOUND);
        Bstr moduleText = module ? optionalText(model_.moduleName) : Bstr();
        Bstr nameText = name ? optionalText(found.function->entryName) : Bstr();
        if (module) *module = moduleText.release();
        if (name) *name = nameText.release();
        if (ordinal) *ordinal = found.function->entryOrdinal;
    });
}

// The module stays loaded: its caller keeps the address for as long as it likes.
HRESULT TypeInfo::AddressOfMember(MEMBERID member, INVOKEKIND invocation, PVOID* address) noexcept {
    if (!address) return E_INVALIDARG;
    *address = nullptr;
    Bstr module;
    Bstr name;
    WORD ordinal = 0;
    HRESULT const result = GetDllEntry(member, invocation, module.out(), name.out(), &ordinal);
    if (FAILED(result)) return result;
    HMODULE const handle = module.get() ? LoadLibraryW(module.get()) : nullptr;
    if (!handle) return TYPE_E_CANTLOADLIBRARY;
    // Entry names are plain letters; others are in no module of this system.
    std::string const entry(name.view().begin(), name.view().end());
    if (!name.get()) return TYPE_E_DLLFUNCTIONNOTFOUND;
    FARPROC const found = GetProcAddress(handle, entry.c_str());
    if (!found) {
        FreeLibrary(handle);
        return TYPE_E_DLLFUNCTIONNOTFOUND;
    }
    *address = reinterpret_cast<PVOID>(found);
    return S_OK;
}

HRESULT TypeInfo::CreateInstance(IUnknown* outer, REFIID riid, PVOID* object) noexcept {
    if (!object) return E_INVALIDARG;
    *object = nullptr;
    if (outer && riid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
    bool const creatable = model_.kind == TKIND_COCLASS && (model_.flags & TYPEFLAG_FCANCREATE);
    if (!creatable) return TYPE_E_WRONGTYPEKIND;
    return CoCreateInstance(model_.id, outer, CLSCTX_SERVER, riid, object);
}

// The format carries no marshalling instructions: only types made in memory
// may have some.
HRESULT TypeInfo::GetMops(MEMBERID member, BSTR* text) noexcept {
    if (!text) return E_INVALIDARG;
    *text = nullptr;
    return guarded([&] {
        Text marshalling = model_.marshalling;
        if (member != MEMBERID_NIL) {
            auto const found = findById(member);
            require(found.function || found.variable, TYPE_E_ELEMENTNOTFOUND);
            marshalling = found.function ? found.function->marshalling : Text();
        }
        *text = optionalText(marshalling).release();
    });
}

}  // namespace velk::typelib
