#include "typelib/attribute_text.h"

#include <algorithm>

#include "text/names.h"
#include "typelib/value_text.h"

namespace velk::velkcom {
namespace {

void addHelp(AttributeList& list, com::Bstr const& text, unsigned context) {
    if ((text.get() != nullptr)) list.push_back("helpstring(" + quoted(com::viewBstr(text)) + ")");
    if (context) list.push_back("helpcontext(" + std::to_string(context) + ")");
}

void addSecondHelp(AttributeList& list, com::Bstr const& module, unsigned context) {
    if (context) list.push_back("helpstringcontext(" + std::to_string(context) + ")");
    if ((module.get() != nullptr))
        list.push_back("helpstringdll(" + quoted(com::viewBstr(module)) + ")");
}

}  // namespace

// The custom data functions of memory are not part of every system's headers.
void closeCustomData(CUSTDATA& data) noexcept {
    for (ULONG i = 0; i < data.cCustData; ++i) com::closeVariant(data.prgCustData[i].varValue);
    CoTaskMemFree(data.prgCustData);
    data = {};
}

void addDocumentation(AttributeList& list, ITypeInfo* type, MEMBERID member) {
    com::Bstr help;
    DWORD context = 0;
    if (SUCCEEDED(type->GetDocumentation(member, nullptr, help.put(), &context, nullptr))) {
        addHelp(list, help, context);
    }
    auto const extended = com::ComPtr(type).query<ITypeInfo2>(IID_ITypeInfo2);
    // The library names the module of the texts once for all of its types.
    DWORD second = 0;
    if (extended && SUCCEEDED(extended->GetDocumentation2(member, 0, nullptr, &second, nullptr))) {
        addSecondHelp(list, com::Bstr(), second);
    }
}

void addDocumentation(AttributeList& list, ITypeLib* library) {
    com::Bstr help;
    com::Bstr file;
    DWORD context = 0;
    if (SUCCEEDED(library->GetDocumentation(-1, nullptr, help.put(), &context, file.put()))) {
        addHelp(list, help, context);
        if ((file.get() != nullptr))
            list.push_back("helpfile(" + quoted(com::viewBstr(file)) + ")");
    }
    auto const extended = com::ComPtr(library).query<ITypeLib2>(IID_ITypeLib2);
    com::Bstr module;
    DWORD second = 0;
    if (extended && SUCCEEDED(extended->GetDocumentation2(-1, 0, nullptr, &second, module.put()))) {
        addSecondHelp(list, module, second);
    }
}

void addCustomData(AttributeList& list, CUSTDATA const& data) {
    AttributeList own;
    for (ULONG i = 0; i < data.cCustData; ++i) {
        auto const& item = data.prgCustData[i];
        own.push_back("custom(" + guidText(item.guid) + ", " + valueText(item.varValue) + ")");
    }
    std::sort(own.begin(), own.end());
    list.insert(list.end(), own.begin(), own.end());
}

AttributeList libraryFlagNames(unsigned flags) {
    return flagNames(flags, {{LIBFLAG_FRESTRICTED, "restricted"},
                             {LIBFLAG_FCONTROL, "control"},
                             {LIBFLAG_FHIDDEN, "hidden"},
                             {LIBFLAG_FHASDISKIMAGE, "hasdiskimage"}});
}

AttributeList typeFlagNames(unsigned flags) {
    return flagNames(flags, {{TYPEFLAG_FAPPOBJECT, "appobject"},
                             {TYPEFLAG_FCANCREATE, "cancreate"},
                             {TYPEFLAG_FLICENSED, "licensed"},
                             {TYPEFLAG_FPREDECLID, "predeclid"},
                             {TYPEFLAG_FHIDDEN, "hidden"},
                             {TYPEFLAG_FCONTROL, "control"},
                             {TYPEFLAG_FDUAL, "dual"},
                             {TYPEFLAG_FNONEXTENSIBLE, "nonextensible"},
                             {TYPEFLAG_FOLEAUTOMATION, "oleautomation"},
                             {TYPEFLAG_FRESTRICTED, "restricted"},
                             {TYPEFLAG_FAGGREGATABLE, "aggregatable"},
                             {TYPEFLAG_FREPLACEABLE, "replaceable"},
                             {TYPEFLAG_FDISPATCHABLE, "dispatchable"},
                             {TYPEFLAG_FREVERSEBIND, "reversebind"},
                             {TYPEFLAG_FPROXY, "proxy"}});
}

AttributeList functionFlagNames(unsigned flags) {
    return flagNames(flags, {{FUNCFLAG_FRESTRICTED, "restricted"},
                             {FUNCFLAG_FSOURCE, "source"},
                             {FUNCFLAG_FBINDABLE, "bindable"},
                             {FUNCFLAG_FREQUESTEDIT, "requestedit"},
                             {FUNCFLAG_FDISPLAYBIND, "displaybind"},
                             {FUNCFLAG_FDEFAULTBIND, "defaultbind"},
                             {FUNCFLAG_FHIDDEN, "hidden"},
                             {FUNCFLAG_FUSESGETLASTERROR, "usesgetlasterror"},
                             {FUNCFLAG_FDEFAULTCOLLELEM, "defaultcollelem"},
                             {FUNCFLAG_FUIDEFAULT, "uidefault"},
                             {FUNCFLAG_FNONBROWSABLE, "nonbrowsable"},
                             {FUNCFLAG_FREPLACEABLE, "replaceable"},
                             {FUNCFLAG_FIMMEDIATEBIND, "immediatebind"}});
}

AttributeList variableFlagNames(unsigned flags) {
    return flagNames(flags, {{VARFLAG_FREADONLY, "readonly"},
                             {VARFLAG_FSOURCE, "source"},
                             {VARFLAG_FBINDABLE, "bindable"},
                             {VARFLAG_FREQUESTEDIT, "requestedit"},
                             {VARFLAG_FDISPLAYBIND, "displaybind"},
                             {VARFLAG_FDEFAULTBIND, "defaultbind"},
                             {VARFLAG_FHIDDEN, "hidden"},
                             {VARFLAG_FRESTRICTED, "restricted"},
                             {VARFLAG_FDEFAULTCOLLELEM, "defaultcollelem"},
                             {VARFLAG_FUIDEFAULT, "uidefault"},
                             {VARFLAG_FNONBROWSABLE, "nonbrowsable"},
                             {VARFLAG_FREPLACEABLE, "replaceable"},
                             {VARFLAG_FIMMEDIATEBIND, "immediatebind"}});
}

AttributeList parameterFlagNames(unsigned flags) {
    return flagNames(flags, {{PARAMFLAG_FIN, "in"},
                             {PARAMFLAG_FOUT, "out"},
                             {PARAMFLAG_FLCID, "lcid"},
                             {PARAMFLAG_FRETVAL, "retval"},
                             {PARAMFLAG_FOPT, "optional"},
                             {PARAMFLAG_FHASDEFAULT, "hasdefault"},
                             {PARAMFLAG_FHASCUSTDATA, "hascustomdata"}});
}

AttributeList implementedFlagNames(unsigned flags) {
    return flagNames(flags, {{IMPLTYPEFLAG_FDEFAULT, "default"},
                             {IMPLTYPEFLAG_FSOURCE, "source"},
                             {IMPLTYPEFLAG_FRESTRICTED, "restricted"},
                             {IMPLTYPEFLAG_FDEFAULTVTABLE, "defaultvtable"}});
}

}  // namespace velk::velkcom
