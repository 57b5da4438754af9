// Functions and variables of types made in memory.

#include <algorithm>

#include "platform/typelib/created_type.h"

namespace velk::typelib {
namespace {

constexpr int propertyWriters = INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF;

// Entry points below this are numbers and no names.
constexpr ULONG_PTR firstAddress = 0x10000;

FUNCKIND functionKindOf(TYPEKIND kind) {
    switch (kind) {
        case TKIND_INTERFACE:
            return FUNC_PUREVIRTUAL;
        case TKIND_DISPATCH:
            return FUNC_DISPATCH;
        case TKIND_MODULE:
            return FUNC_STATIC;
        default:
            fail(TYPE_E_BADMODULEKIND);
    }
}

bool takes(TYPEKIND kind, VARKIND variable) {
    switch (kind) {
        case TKIND_ENUM:
            return variable == VAR_CONST;
        case TKIND_RECORD:
        case TKIND_UNION:
            return variable == VAR_PERINSTANCE;
        case TKIND_MODULE:
            return variable == VAR_CONST || variable == VAR_STATIC;
        case TKIND_DISPATCH:
            return variable == VAR_DISPATCH;
        default:
            return false;
    }
}

bool isInvocation(INVOKEKIND kind) {
    return kind == INVOKE_FUNC || kind == INVOKE_PROPERTYGET || kind == INVOKE_PROPERTYPUT ||
           kind == INVOKE_PROPERTYPUTREF;
}

void check(FUNCDESC const& given, TYPEKIND kind) {
    bool const slot = given.oVft >= 0 && given.oVft % static_cast<int>(sizeof(void*)) == 0;
    require(slot, E_INVALIDARG);
    require(given.funckind == functionKindOf(kind), TYPE_E_BADMODULEKIND);
    require(isInvocation(given.invkind), E_INVALIDARG);
    require(given.callconv >= 0 && given.callconv < CC_MAX, E_INVALIDARG);
    require(given.cParams == 0 || (given.cParams > 0 && given.lprgelemdescParam), E_INVALIDARG);
    // -1 marks the last parameter as taking any number of arguments.
    require(given.cParamsOpt >= -1 && given.cParamsOpt <= given.cParams, E_INVALIDARG);
    bool const valueless = (given.invkind & propertyWriters) && given.cParams == 0;
    require(!valueless, TYPE_E_INCONSISTENTPROPFUNCS);
}

// Two ways to use one property.
bool areAccessors(FunctionModel const& left, FunctionModel const& right) {
    return left.id == right.id && left.invocation != right.invocation &&
           left.invocation != INVOKE_FUNC && right.invocation != INVOKE_FUNC;
}

template <typename Entry>
void insert(std::vector<Entry>& list, std::size_t index, Entry entry) {
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(index), std::move(entry));
}

template <typename Entry>
void erase(std::vector<Entry>& list, std::size_t index) {
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
}

}  // namespace

FunctionModel& CreatedType::function(UINT index) {
    require(index < functions_.size(), TYPE_E_ELEMENTNOTFOUND);
    return functions_[index];
}

VariableModel& CreatedType::variable(UINT index) {
    require(index < variables_.size(), TYPE_E_ELEMENTNOTFOUND);
    return variables_[index];
}

void CreatedType::membersChanged() {
    model_.functions = functions_;
    model_.variables = variables_;
    layOutMembers();
}

ParameterModel CreatedType::copyParameter(ELEMDESC const& given) {
    ParameterModel parameter;
    parameter.type = library_.copies().type(given.tdesc);
    parameter.flags = given.paramdesc.wParamFlags;
    if (parameter.flags & PARAMFLAG_FHASDEFAULT) {
        parameter.defaultValue = library_.copies().defaultValue(given.paramdesc.pparamdescex);
    }
    return parameter;
}

FunctionModel CreatedType::copyFunction(FUNCDESC const& given, FunctionDraft& draft) {
    auto const count = static_cast<std::size_t>(given.cParams);
    draft.parameters = library_.model().makeArray<ParameterModel>(count);
    std::transform(given.lprgelemdescParam, given.lprgelemdescParam + count,
                   draft.parameters.begin(),
                   [this](ELEMDESC const& parameter) { return copyParameter(parameter); });
    draft.idGiven = given.memid != MEMBERID_NIL;
    draft.offsetGiven = given.oVft != 0;
    FunctionModel result;
    result.id = given.memid;
    result.result = library_.copies().type(given.elemdescFunc.tdesc);
    result.kind = given.funckind;
    result.invocation = given.invkind;
    result.convention = given.callconv;
    result.optionalCount = given.cParamsOpt;
    result.vtableOffset = given.oVft;
    result.flags = given.wFuncFlags;
    result.parameters = draft.parameters;
    return result;
}

HRESULT CreatedType::AddFuncDesc(UINT index, FUNCDESC* given) noexcept {
    if (!given) return E_INVALIDARG;
    return guarded([&] {
        check(*given, kind_);
        require(index <= functions_.size(), TYPE_E_ELEMENTNOTFOUND);
        FunctionDraft draft;
        auto const copy = copyFunction(*given, draft);
        functionDrafts_.reserve(functionDrafts_.size() + 1);
        insert(functions_, index, copy);
        insert(functionDrafts_, index, draft);
        try {
            membersChanged();
        } catch (...) {
            removeFunction(index);
            throw;
        }
    });
}

VariableModel CreatedType::copyVariable(VARDESC const& given) {
    VariableModel result;
    result.id = given.memid;
    result.type = library_.copies().type(given.elemdescVar.tdesc);
    result.kind = given.varkind;
    result.flags = given.wVarFlags;
    if (given.varkind == VAR_CONST) result.value = library_.copies().value(given.lpvarValue);
    return result;
}

HRESULT CreatedType::AddVarDesc(UINT index, VARDESC* given) noexcept {
    if (!given) return E_INVALIDARG;
    return guarded([&] {
        require(takes(kind_, given->varkind), TYPE_E_BADMODULEKIND);
        require(index <= variables_.size(), TYPE_E_ELEMENTNOTFOUND);
        auto const copy = copyVariable(*given);
        variableIdsGiven_.reserve(variableIdsGiven_.size() + 1);
        insert(variables_, index, copy);
        insert(variableIdsGiven_, index, given->memid != MEMBERID_NIL);
        membersChanged();
    });
}

void CreatedType::removeFunction(std::size_t index) {
    erase(functions_, index);
    erase(functionDrafts_, index);
    membersChanged();
}

void CreatedType::removeVariable(std::size_t index) {
    erase(variables_, index);
    erase(variableIdsGiven_, index);
    membersChanged();
}

HRESULT CreatedType::DeleteFuncDesc(UINT index) noexcept {
    return guarded([&] {
        function(index);
        removeFunction(index);
    });
}

HRESULT CreatedType::DeleteFuncDescByMemId(MEMBERID member, INVOKEKIND invocation) noexcept {
    return guarded([&] {
        auto const found =
            std::find_if(functions_.begin(), functions_.end(), [&](FunctionModel const& entry) {
                return entry.id == member && entry.invocation == invocation;
            });
        require(found != functions_.end(), TYPE_E_ELEMENTNOTFOUND);
        removeFunction(static_cast<std::size_t>(found - functions_.begin()));
    });
}

HRESULT CreatedType::DeleteVarDesc(UINT index) noexcept {
    return guarded([&] {
        variable(index);
        removeVariable(index);
    });
}

HRESULT CreatedType::DeleteVarDescByMemId(MEMBERID member) noexcept {
    return guarded([&] {
        auto const found =
            std::find_if(variables_.begin(), variables_.end(),
                         [&](VariableModel const& entry) { return entry.id == member; });
        require(found != variables_.end(), TYPE_E_ELEMENTNOTFOUND);
        removeVariable(static_cast<std::size_t>(found - variables_.begin()));
    });
}

void CreatedType::requireFreeName(Text name, FunctionModel const* function,
                                  VariableModel const* variable) {
    for (auto const& other : functions_) {
        if (&other == function || !sameName(other.name, name)) continue;
        require(function && areAccessors(*function, other), TYPE_E_AMBIGUOUSNAME);
    }
    for (auto const& other : variables_) {
        require(&other == variable || !sameName(other.name, name), TYPE_E_AMBIGUOUSNAME);
    }
}

HRESULT CreatedType::SetFuncAndParamNames(UINT index, LPOLESTR* names, UINT count) noexcept {
    if (!names) return E_INVALIDARG;
    return guarded([&] {
        auto& entry = function(index);
        auto const& parameters = functionDrafts_[index].parameters;
        // The value that a property is given has no name.
        bool const writer = entry.invocation & propertyWriters;
        std::size_t const nameable = 1 + parameters.size() - (writer ? 1 : 0);
        require(count > 0 && count <= nameable, TYPE_E_ELEMENTNOTFOUND);
        bool const complete =
            std::all_of(names, names + count, [](LPOLESTR name) { return name != nullptr; });
        require(complete, E_INVALIDARG);
        requireFreeName(names[0], &entry, nullptr);
        std::vector<Text> kept;
        for (UINT i = 0; i < count; ++i) kept.push_back(library_.copies().text(names[i]));
        entry.name = kept[0];
        for (UINT i = 1; i < count; ++i) parameters[i - 1].name = kept[i];
        info_.forgetMembers();
        library_.library().forgetIndex();
    });
}

HRESULT CreatedType::SetVarName(UINT index, LPOLESTR name) noexcept {
    if (!name) return E_INVALIDARG;
    return guarded([&] {
        auto& entry = variable(index);
        requireFreeName(name, nullptr, &entry);
        entry.name = library_.copies().text(name);
        info_.forgetMembers();
        library_.library().forgetIndex();
    });
}

// A module of descriptions stands for one module of code.
HRESULT CreatedType::DefineFuncAsDllEntry(UINT index, LPOLESTR module, LPOLESTR entry) noexcept {
    if (kind_ != TKIND_MODULE) return TYPE_E_BADMODULEKIND;
    if (!module || !entry) return E_INVALIDARG;
    return guarded([&] {
        auto& target = function(index);
        bool const other = model_.moduleName.data() && !sameName(model_.moduleName, module);
        require(!other, E_INVALIDARG);
        auto const number = reinterpret_cast<ULONG_PTR>(entry);
        Text const name = number < firstAddress ? Text() : library_.copies().text(entry);
        model_.moduleName = library_.copies().text(module);
        target.entryName = name;
        target.entryOrdinal = static_cast<WORD>(name.data() ? 0 : number);
    });
}

HRESULT CreatedType::SetFuncDocString(UINT index, LPOLESTR text) noexcept {
    if (!text) return E_INVALIDARG;
    return guarded([&] { function(index).documentation.help = library_.copies().text(text); });
}

HRESULT CreatedType::SetVarDocString(UINT index, LPOLESTR text) noexcept {
    if (!text) return E_INVALIDARG;
    return guarded([&] { variable(index).documentation.help = library_.copies().text(text); });
}

HRESULT CreatedType::SetFuncHelpContext(UINT index, DWORD context) noexcept {
    return guarded([&] { function(index).documentation.context = context; });
}

HRESULT CreatedType::SetVarHelpContext(UINT index, DWORD context) noexcept {
    return guarded([&] { variable(index).documentation.context = context; });
}

HRESULT CreatedType::SetFuncHelpStringContext(UINT index, ULONG context) noexcept {
    return guarded([&] { function(index).documentation.stringContext = context; });
}

HRESULT CreatedType::SetVarHelpStringContext(UINT index, ULONG context) noexcept {
    return guarded([&] { variable(index).documentation.stringContext = context; });
}

// -1 means the type itself.
HRESULT CreatedType::SetMops(UINT index, BSTR text) noexcept {
    return guarded([&] {
        Text& target =
            index == static_cast<UINT>(-1) ? model_.marshalling : function(index).marshalling;
        target = library_.model().keep({text, SysStringLen(text)});
    });
}

HRESULT CreatedType::SetFuncCustData(UINT index, REFGUID id, VARIANT* value) noexcept {
    return guarded([&] {
        auto& entry = function(index);
        entry.custom = library_.copies().withItem(entry.custom, id, value);
    });
}

HRESULT CreatedType::SetParamCustData(UINT index, UINT parameter, REFGUID id,
                                      VARIANT* value) noexcept {
    return guarded([&] {
        function(index);
        auto const& parameters = functionDrafts_[index].parameters;
        require(parameter < parameters.size(), TYPE_E_ELEMENTNOTFOUND);
        auto& entry = parameters[parameter];
        entry.custom = library_.copies().withItem(entry.custom, id, value);
    });
}

HRESULT CreatedType::SetVarCustData(UINT index, REFGUID id, VARIANT* value) noexcept {
    return guarded([&] {
        auto& entry = variable(index);
        entry.custom = library_.copies().withItem(entry.custom, id, value);
    });
}

}  // namespace velk::typelib
