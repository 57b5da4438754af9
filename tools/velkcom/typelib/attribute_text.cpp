#include "attribute_text.h"

#include <algorithm>

#include "owners.h"
#include "value_text.h"

namespace velk::tools {
namespace {

void addHelp(AttributeList& list, TextOwner const& text, unsigned context) {
    if (text.present()) list.push_back("helpstring(" + quoted(text.view()) + ")");
    if (context) list.push_back("helpcontext(" + std::to_string(context) + ")");
}

void addSecondHelp(AttributeList& list, TextOwner const& module, unsigned context) {
    if (context) list.push_back("helpstringcontext(" + std::to_string(context) + ")");
    if (module.present()) list.push_back("helpstringdll(" + quoted(module.view()) + ")");
}

// The custom data functions of memory are not part of every system's headers.
void clear(CUSTDATA& data) {
    for (ULONG i = 0; i < data.cCustData; ++i) VariantClear(&data.prgCustData[i].varValue);
    CoTaskMemFree(data.prgCustData);
    data = {};
}

}  // namespace

void addDocumentation(AttributeList& list, ITypeInfo* type, MEMBERID member) {
    TextOwner help;
    DWORD context = 0;
    if (SUCCEEDED(type->GetDocumentation(member, nullptr, help.out(), &context, nullptr))) {
        addHelp(list, help, context);
    }
    ITypeInfo2* raw = nullptr;
    if (FAILED(type->QueryInterface(IID_ITypeInfo2, reinterpret_cast<void**>(&raw)))) return;
    InterfaceOwner<ITypeInfo2> const extended(raw);
    // The library names the module of the texts once for all of its types.
    DWORD second = 0;
    if (SUCCEEDED(raw->GetDocumentation2(member, 0, nullptr, &second, nullptr))) {
        addSecondHelp(list, TextOwner(), second);
    }
}

void addDocumentation(AttributeList& list, ITypeLib* library) {
    TextOwner help;
    TextOwner file;
    DWORD context = 0;
    if (SUCCEEDED(library->GetDocumentation(-1, nullptr, help.out(), &context, file.out()))) {
        addHelp(list, help, context);
        if (file.present()) list.push_back("helpfile(" + quoted(file.view()) + ")");
    }
    ITypeLib2* raw = nullptr;
    if (FAILED(library->QueryInterface(IID_ITypeLib2, reinterpret_cast<void**>(&raw)))) return;
    InterfaceOwner<ITypeLib2> const extended(raw);
    TextOwner module;
    DWORD second = 0;
    if (SUCCEEDED(raw->GetDocumentation2(-1, 0, nullptr, &second, module.out()))) {
        addSecondHelp(list, module, second);
    }
}

void addCustomData(AttributeList& list, CUSTDATA& data) {
    AttributeList own;
    for (ULONG i = 0; i < data.cCustData; ++i) {
        auto const& item = data.prgCustData[i];
        own.push_back("custom(" + guidText(item.guid) + ", " + valueText(item.varValue) + ")");
    }
    std::sort(own.begin(), own.end());
    list.insert(list.end(), own.begin(), own.end());
    clear(data);
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

}  // namespace velk::tools
