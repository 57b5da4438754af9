// How a type finds its members, those of its bases included.

#include <algorithm>

#include "platform/typelib/interfaces/type_info.h"

namespace velk::typelib {
namespace {

// Bases beyond this are taken for a type that derives from itself.
constexpr int deepestBase = 64;

bool isHidden(ParameterModel const& parameter) {
    return parameter.flags & (PARAMFLAG_FRETVAL | PARAMFLAG_FLCID);
}

}  // namespace

MemberIndex const& TypeInfo::members() const {
    return members_.get([this] { return MemberIndex(model_); });
}

Reference<TypeInfo> TypeInfo::base() {
    bool const derives = model_.kind == TKIND_INTERFACE || model_.dual();
    if (!derives || model_.implemented.empty()) return {};
    return library_.resolve(library_.vtableReference(model_.implemented[0].reference));
}

UINT TypeInfo::functionCount() const {
    auto const own = static_cast<UINT>(model_.functions.size());
    return view_ == View::dispatch ? own + model_.inheritedFunctions : own;
}

FunctionPlace TypeInfo::functionAt(UINT index) {
    require(index < functionCount(), TYPE_E_ELEMENTNOTFOUND);
    if (view_ == View::dispatch) return flattenedFunction(index, 0);
    return {Reference<TypeInfo>(this), &model_.functions[index], index};
}

FunctionPlace TypeInfo::flattenedFunction(UINT index, int depth) {
    require(depth < deepestBase, TYPE_E_CIRCULARTYPE);
    UINT const inherited = model_.inheritedFunctions;
    if (index < inherited) {
        auto const parent = base();
        require(bool(parent), TYPE_E_ELEMENTNOTFOUND);
        return parent->flattenedFunction(index, depth + 1);
    }
    UINT const own = index - inherited;
    require(own < model_.functions.size(), TYPE_E_ELEMENTNOTFOUND);
    return {Reference<TypeInfo>(this), &model_.functions[own], own};
}

MemberFound TypeInfo::findById(MEMBERID id, WORD invocations) {
    Reference<TypeInfo> type(this);
    for (int depth = 0; type; ++depth) {
        require(depth < deepestBase, TYPE_E_CIRCULARTYPE);
        for (auto const& place : type->members().identified(id)) {
            if (place.isVariable) return {type, nullptr, &type->model_.variables[place.index]};
            auto const& function = type->model_.functions[place.index];
            if (!invocations || (function.invocation & invocations)) return {type, &function};
        }
        type = type->base();
    }
    return {};
}

std::vector<MemberFound> TypeInfo::findByName(Text name) {
    auto const key = folded(name);
    std::vector<MemberFound> found;
    Reference<TypeInfo> type(this);
    for (int depth = 0; type && found.empty(); ++depth) {
        require(depth < deepestBase, TYPE_E_CIRCULARTYPE);
        for (auto const& place : type->members().named(key)) {
            if (place.isVariable) {
                found.push_back({type, nullptr, &type->model_.variables[place.index]});
            } else {
                found.push_back({type, &type->model_.functions[place.index], nullptr});
            }
        }
        type = type->base();
    }
    return found;
}

HRESULT TypeInfo::GetNames(MEMBERID member, BSTR* names, UINT capacity, UINT* count) noexcept {
    if (!names || !count) return E_INVALIDARG;
    *count = 0;
    return guarded([&] {
        auto const found = findById(member);
        require(found.function || found.variable, TYPE_E_ELEMENTNOTFOUND);
        std::vector<Bstr> texts;
        if (found.variable) {
            texts.push_back(optionalText(found.variable->name));
        } else {
            texts.push_back(optionalText(found.function->name));
            for (auto const& parameter : found.function->parameters) {
                // The value of a property has no name, and names end with it.
                if (!parameter.name.data()) break;
                if (view_ == View::dispatch && isHidden(parameter)) continue;
                texts.push_back(Bstr(parameter.name));
            }
        }
        UINT const fitting = std::min(capacity, static_cast<UINT>(texts.size()));
        for (UINT i = 0; i < fitting; ++i) names[i] = texts[i].release();
        *count = fitting;
    });
}

HRESULT TypeInfo::GetIDsOfNames(LPOLESTR* names, UINT count, MEMBERID* members) noexcept {
    if (!names || !members || count == 0) return E_INVALIDARG;
    std::fill_n(members, count, DISPID_UNKNOWN);
    if (!std::all_of(names, names + count, [](LPOLESTR name) { return name != nullptr; })) {
        return E_INVALIDARG;
    }
    return guarded([&] {
        auto found = findByName(names[0]);
        if (found.empty() && model_.kind == TKIND_COCLASS) {
            for (auto const& entry : model_.implemented) {
                if (entry.flags & IMPLTYPEFLAG_FSOURCE) continue;
                found = library_.resolve(entry.reference)->findByName(names[0]);
                if (!found.empty()) break;
            }
        }
        require(!found.empty(), DISP_E_UNKNOWNNAME);
        members[0] = found[0].function ? found[0].function->id : found[0].variable->id;
        HRESULT result = S_OK;
        for (UINT i = 1; i < count; ++i) {
            for (auto const& place : found) {
                if (!place.function || members[i] != DISPID_UNKNOWN) continue;
                auto const& parameters = place.function->parameters;
                auto const match =
                    std::find_if(parameters.begin(), parameters.end(),
                                 [&](auto const& p) { return sameName(p.name, names[i]); });
                if (match != parameters.end()) {
                    members[i] = static_cast<MEMBERID>(match - parameters.begin());
                }
            }
            if (members[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
        }
        return result;
    });
}

HRESULT TypeInfo::GetFuncIndexOfMemId(MEMBERID member, INVOKEKIND invocation,
                                      UINT* index) noexcept {
    if (!index) return E_INVALIDARG;
    return guarded([&] {
        for (UINT i = 0; i < functionCount(); ++i) {
            auto const place = functionAt(i);
            if (place.model->id != member) continue;
            if (invocation && !(place.model->invocation & invocation)) continue;
            *index = i;
            return S_OK;
        }
        return TYPE_E_ELEMENTNOTFOUND;
    });
}

}  // namespace velk::typelib
