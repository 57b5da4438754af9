// Published descriptions of a type, its functions and its variables, and custom data.

#include <algorithm>

#include "objbase.h"
#include "platform/typelib/interfaces/descriptions.h"
#include "platform/typelib/interfaces/type_info.h"

namespace velk::typelib {
namespace {

// The slots of IDispatch, which are all that a dispatch view has.
constexpr WORD dispatchVtableSize = 7 * sizeof(void*);

// Copies types into a description when their references have to be translated
// for another library than their own.
template <typename Published>
class TypeCopier {
  public:
    TypeCopier(Description<Published>& description, TypeLibrary& owner, TypeLibrary& reader)
        : description_(description), owner_(owner), reader_(reader) {}

    TYPEDESC copy(TYPEDESC const& type) {
        if (&owner_ == &reader_) return type;
        TYPEDESC result = type;
        switch (type.vt) {
            case VT_PTR:
            case VT_SAFEARRAY: {
                auto const target = copy(*type.lptdesc);
                result.lptdesc = &description_.types.emplace_back(target);
                break;
            }
            case VT_CARRAY:
                result.lpadesc = copyArray(*type.lpadesc);
                break;
            case VT_USERDEFINED:
                result.hreftype = reader_.borrow(owner_, type.hreftype);
                break;
            default:
                break;
        }
        return result;
    }

  private:
    ARRAYDESC* copyArray(ARRAYDESC const& array) {
        std::size_t const size = sizeof(ARRAYDESC) + array.cDims * sizeof(SAFEARRAYBOUND);
        auto block = std::make_unique<std::byte[]>(size);
        auto* result = reinterpret_cast<ARRAYDESC*>(block.get());
        result->tdescElem = copy(array.tdescElem);
        result->cDims = array.cDims;
        std::copy_n(array.rgbounds, array.cDims, result->rgbounds);
        description_.blocks.push_back(std::move(block));
        return result;
    }

    Description<Published>& description_;
    TypeLibrary& owner_;
    TypeLibrary& reader_;
};

template <typename Published>
ELEMDESC describeParameter(TypeCopier<Published>& copier, ParameterModel const& parameter) {
    ELEMDESC element{};
    element.tdesc = copier.copy(parameter.type);
    element.paramdesc.wParamFlags = parameter.flags;
    element.paramdesc.pparamdescex = parameter.defaultValue;
    return element;
}

// What an automation client gets back: the target of the parameter that is the
// return value, in place of a result code.
TYPEDESC dispatchResult(FunctionModel const& model) {
    if (model.result.vt != VT_HRESULT) return model.result;
    for (auto const& parameter : model.parameters) {
        if (!(parameter.flags & PARAMFLAG_FRETVAL)) continue;
        return parameter.type.vt == VT_PTR ? *parameter.type.lptdesc : parameter.type;
    }
    TYPEDESC nothing{};
    nothing.vt = VT_VOID;
    return nothing;
}

}  // namespace

HRESULT copyCustomData(CustomData items, CUSTDATA* data) {
    require(data, E_INVALIDARG);
    *data = {};
    if (items.empty()) return S_OK;
    auto* copies = static_cast<CUSTDATAITEM*>(CoTaskMemAlloc(items.size() * sizeof(CUSTDATAITEM)));
    require(copies, E_OUTOFMEMORY);
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < items.size(); ++i) {
        copies[i].guid = items[i].id;
        VariantInit(&copies[i].varValue);
        if (SUCCEEDED(result)) result = VariantCopy(&copies[i].varValue, &items[i].value);
    }
    data->cCustData = static_cast<DWORD>(items.size());
    data->prgCustData = copies;
    return result;
}

HRESULT TypeInfo::GetTypeAttr(TYPEATTR** attributes) noexcept {
    if (!attributes) return E_INVALIDARG;
    *attributes = nullptr;
    return guarded([&] {
        auto description = std::make_unique<Description<TYPEATTR>>();
        description->guid = id();
        description->lcid = library_.model().lcid;
        description->memidConstructor = MEMBERID_NIL;
        description->memidDestructor = MEMBERID_NIL;
        description->cbSizeInstance = model_.instanceSize;
        description->typekind = kind();
        description->cFuncs = static_cast<WORD>(functionCount());
        description->cVars = static_cast<WORD>(model_.variables.size());
        description->cImplTypes = static_cast<WORD>(model_.implemented.size());
        description->cbSizeVft = view_ == View::dispatch ? dispatchVtableSize : model_.vtableSize;
        description->cbAlignment = model_.alignment;
        // A dispinterface is never said to be for automation, even where it is
        // one view of a dual interface that is.
        auto const hidden = kind() == TKIND_DISPATCH ? TYPEFLAG_FOLEAUTOMATION : 0;
        description->wTypeFlags = static_cast<WORD>(model_.flags & ~hidden);
        description->wMajorVerNum = model_.majorVersion;
        description->wMinorVerNum = model_.minorVersion;
        description->tdescAlias = model_.alias;
        *attributes = description.release();
    });
}

HRESULT TypeInfo::GetFuncDesc(UINT index, FUNCDESC** function) noexcept {
    if (!function) return E_INVALIDARG;
    *function = nullptr;
    return guarded([&] { *function = describe(functionAt(index)); });
}

FUNCDESC* TypeInfo::describe(FunctionPlace const& place) {
    auto const& model = *place.model;
    auto description = std::make_unique<Description<FUNCDESC>>();
    TypeCopier<FUNCDESC> copier(*description, place.owner->library(), library_);
    bool const dispatch = view_ == View::dispatch;
    bool const hidesResult = dispatch && model.result.vt == VT_HRESULT;
    for (auto const& parameter : model.parameters) {
        if (hidesResult && (parameter.flags & PARAMFLAG_FRETVAL)) continue;
        if (dispatch && (parameter.flags & PARAMFLAG_FLCID)) continue;
        description->elements.push_back(describeParameter(copier, parameter));
    }
    description->memid = model.id;
    description->lprgelemdescParam =
        description->elements.empty() ? nullptr : description->elements.data();
    description->funckind = dispatch ? FUNC_DISPATCH : model.kind;
    description->invkind = model.invocation;
    description->callconv = model.convention;
    description->cParams = static_cast<SHORT>(description->elements.size());
    description->cParamsOpt = model.optionalCount;
    // A function that is called by its identifier only has no slot.
    description->oVft = model.kind == FUNC_DISPATCH ? SHORT{0} : model.vtableOffset;
    description->elemdescFunc.tdesc = copier.copy(dispatch ? dispatchResult(model) : model.result);
    description->wFuncFlags = model.flags;
    return description.release();
}

HRESULT TypeInfo::GetVarDesc(UINT index, VARDESC** variable) noexcept {
    if (!variable) return E_INVALIDARG;
    *variable = nullptr;
    if (index >= model_.variables.size()) return TYPE_E_ELEMENTNOTFOUND;
    return guarded([&] {
        auto const& model = model_.variables[index];
        auto description = std::make_unique<Description<VARDESC>>();
        description->memid = model.id;
        description->elemdescVar.tdesc = model.type;
        description->wVarFlags = model.flags;
        description->varkind = model.kind;
        if (model.kind == VAR_CONST) {
            description->lpvarValue = model.value;
        } else {
            description->oInst = model.offset;
        }
        *variable = description.release();
    });
}

void TypeInfo::ReleaseTypeAttr(TYPEATTR* attributes) noexcept {
    giveBack(attributes);
}

void TypeInfo::ReleaseFuncDesc(FUNCDESC* function) noexcept {
    giveBack(function);
}

void TypeInfo::ReleaseVarDesc(VARDESC* variable) noexcept {
    giveBack(variable);
}

}  // namespace velk::typelib
