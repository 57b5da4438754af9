// Names, help and entry points of members.

#include "platform/typelib/interfaces/type_info.h"

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

}  // namespace velk::typelib
