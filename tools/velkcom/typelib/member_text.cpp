#include "typelib/member_text.h"

#include <algorithm>
#include <vector>

#include "text/names.h"
#include "typelib/attribute_text.h"
#include "typelib/type_text.h"
#include "typelib/value_text.h"

namespace velk::velkcom {
namespace {

// More names than any function has parameters.
constexpr UINT mostNames = 256;

std::vector<std::string> memberNames(ITypeInfo* type, MEMBERID member) {
    std::vector<BSTR> raw(mostNames, nullptr);
    UINT count = 0;
    if (FAILED(type->GetNames(member, raw.data(), mostNames, &count))) count = 0;
    std::vector<std::string> names;
    for (UINT i = 0; i < count && i < mostNames; ++i) {
        com::Bstr const name(raw[i]);
        names.push_back(nameText(com::viewBstr(name)));
    }
    return names;
}

std::string nameOf(ITypeInfo* type, MEMBERID member) {
    com::Bstr name;
    if (FAILED(type->GetDocumentation(member, name.put(), nullptr, nullptr, nullptr))) return "?";
    return nameText(com::viewBstr(name));
}

constexpr auto setsProperty = INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF;

// The parameters that all accessors of a property share: neither the value
// that is set nor the place for the one that is got.
std::size_t sharedParameters(FUNCDESC const& function) {
    if (function.cParams <= 0) return 0;
    auto const count = static_cast<std::size_t>(function.cParams);
    bool const getsLast =
        (function.lprgelemdescParam[count - 1].paramdesc.wParamFlags & PARAMFLAG_FRETVAL) != 0;
    return (function.invkind & setsProperty) || getsLast ? count - 1 : count;
}

// The name of a function and those of its parameters. A member has one list of
// names, that of its first function; another one shares only the leading ones.
// The first is looked for here: GetFuncIndexOfMemId does not count inherited
// functions on every system.
std::vector<std::string> functionNames(ITypeInfo* type, UINT index, FUNCDESC const& function) {
    auto names = memberNames(type, function.memid);
    if (function.invkind == INVOKE_FUNC) return names;
    for (UINT i = 0; i < index; ++i) {
        auto const named = functionOf(type, i);
        if (!named || named->memid != function.memid) continue;
        auto const shared = std::min(sharedParameters(function), sharedParameters(*named));
        if (names.size() > shared + 1) names.resize(shared + 1);
        break;
    }
    return names;
}

char const* invocationName(INVOKEKIND kind) {
    switch (kind) {
        case INVOKE_PROPERTYGET:
            return "propget";
        case INVOKE_PROPERTYPUT:
            return "propput";
        case INVOKE_PROPERTYPUTREF:
            return "propputref";
        default:
            return nullptr;
    }
}

char const* functionKindName(FUNCKIND kind) {
    static constexpr char const* names[] = {"virtual", "pure virtual", "nonvirtual", "static",
                                            "dispatch"};
    return kind >= FUNC_VIRTUAL && kind <= FUNC_DISPATCH ? names[kind] : "unknown kind";
}

char const* conventionName(CALLCONV convention) {
    static constexpr char const* names[] = {"fastcall",  "cdecl",    "pascal",
                                            "macpascal", "stdcall",  "fpfastcall",
                                            "syscall",   "mpwcdecl", "mpwpascal"};
    return convention >= CC_FASTCALL && convention < CC_MAX ? names[convention]
                                                            : "unknown convention";
}

std::string parameterText(ITypeInfo* type, UINT index, ELEMDESC const& element, UINT position,
                          std::string const& name) {
    auto const& parameter = element.paramdesc;
    // The default says more than its flag.
    AttributeList list = parameterFlagNames(parameter.wParamFlags & ~PARAMFLAG_FHASDEFAULT);
    if ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) && parameter.pparamdescex) {
        list.push_back("defaultvalue(" + valueText(parameter.pparamdescex->varDefaultValue) + ")");
    }
    addCustomData<ITypeInfo2>(list, type, IID_ITypeInfo2,
                              [&](ITypeInfo2& extended, CUSTDATA* data) {
                                  return extended.GetAllParamCustData(index, position, data);
                              });
    std::string const text = bracketed(list) + typeText(type, element.tdesc);
    return name.empty() ? text : text + " " + name;
}

std::string entryText(ITypeInfo* type, FUNCDESC const& function) {
    com::Bstr module;
    com::Bstr name;
    WORD ordinal = 0;
    if (FAILED(type->GetDllEntry(function.memid, function.invkind, module.put(), name.put(),
                                 &ordinal))) {
        return {};
    }
    std::string const entry =
        (name.get() != nullptr) ? quoted(com::viewBstr(name)) : std::to_string(ordinal);
    return ", entry " + entry + " of " + quoted(com::viewBstr(module));
}

AttributeList functionAttributes(ITypeInfo* type, UINT index, FUNCDESC const& function) {
    AttributeList list{"id(" + hexadecimal(static_cast<unsigned>(function.memid)) + ")"};
    if (char const* kind = invocationName(function.invkind)) list.emplace_back(kind);
    for (auto& flag : functionFlagNames(function.wFuncFlags)) list.push_back(std::move(flag));
    if (function.cParamsOpt == -1) list.emplace_back("vararg");
    if (function.cParamsOpt > 0) {
        list.push_back("optionals(" + std::to_string(function.cParamsOpt) + ")");
    }
    addDocumentation(list, type, function.memid);
    addCustomData<ITypeInfo2>(list, type, IID_ITypeInfo2,
                              [&](ITypeInfo2& extended, CUSTDATA* data) {
                                  return extended.GetAllFuncCustData(index, data);
                              });
    return list;
}

}  // namespace

std::string functionText(ITypeInfo* type, UINT index, std::string const& indent) {
    auto const function = functionOf(type, index);
    if (!function) return indent + "// function " + std::to_string(index) + " is unreadable\n";
    auto const names = functionNames(type, index, *function);
    std::vector<std::string> parameters;
    for (SHORT i = 0; i < function->cParams; ++i) {
        UINT const position = static_cast<UINT>(i);
        std::string const name = position + 1 < names.size() ? names[position + 1] : std::string();
        parameters.push_back(
            parameterText(type, index, function->lprgelemdescParam[i], position, name));
    }
    std::string text = indent + "[" + joined(functionAttributes(type, index, *function)) + "]\n";
    text += indent + typeText(type, function->elemdescFunc.tdesc) + " " +
            (names.empty() ? "?" : names[0]) + "(" + joined(parameters) + ");";
    text += "  // vtable " + std::to_string(function->oVft) + ", " +
            functionKindName(function->funckind) + ", " + conventionName(function->callconv);
    if (function->funckind == FUNC_STATIC) text += entryText(type, *function);
    return text + "\n";
}

std::string variableText(ITypeInfo* type, UINT index, std::string const& indent) {
    auto const variable = variableOf(type, index);
    if (!variable) return indent + "// variable " + std::to_string(index) + " is unreadable\n";
    AttributeList list{"id(" + hexadecimal(static_cast<unsigned>(variable->memid)) + ")"};
    for (auto& flag : variableFlagNames(variable->wVarFlags)) list.push_back(std::move(flag));
    addDocumentation(list, type, variable->memid);
    addCustomData<ITypeInfo2>(list, type, IID_ITypeInfo2,
                              [&](ITypeInfo2& extended, CUSTDATA* data) {
                                  return extended.GetAllVarCustData(index, data);
                              });
    bool const constant = variable->varkind == VAR_CONST;
    std::string text = indent + bracketed(list) + (constant ? "const " : "") +
                       typeText(type, variable->elemdescVar.tdesc) + " " +
                       nameOf(type, variable->memid);
    if (constant && variable->lpvarValue) text += " = " + valueText(*variable->lpvarValue);
    text += ";";
    if (variable->varkind == VAR_PERINSTANCE) {
        text += "  // offset " + std::to_string(variable->oInst);
    } else if (variable->varkind == VAR_STATIC) {
        text += "  // static";
    } else if (variable->varkind == VAR_DISPATCH) {
        text += "  // dispatch";
    }
    return text + "\n";
}

std::string implementedText(ITypeInfo* type, UINT index, std::string const& indent) {
    HREFTYPE reference = 0;
    HRESULT const result = type->GetRefTypeOfImplType(index, &reference);
    INT flags = 0;
    if (FAILED(type->GetImplTypeFlags(index, &flags))) flags = 0;
    AttributeList list = implementedFlagNames(static_cast<unsigned>(flags));
    // Only a class annotates what it implements.
    auto const attributes = attributesOf(type);
    bool const annotated = attributes && attributes->typekind == TKIND_COCLASS;
    if (annotated)
        addCustomData<ITypeInfo2>(list, type, IID_ITypeInfo2,
                                  [&](ITypeInfo2& extended, CUSTDATA* data) {
                                      return extended.GetAllImplTypeCustData(index, data);
                                  });
    std::string const name = SUCCEEDED(result)
                                 ? referenceName(type, reference)
                                 : "<" + hexadecimal(static_cast<unsigned>(result), 8) + ">";
    return indent + "implements " + bracketed(list) + name + ";\n";
}

}  // namespace velk::velkcom
