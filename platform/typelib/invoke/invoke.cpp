// ITypeInfo::Invoke: late-bound calls by type information.

#include <algorithm>
#include <memory>
#include <vector>

#include "platform/typelib/interfaces/type_info.h"
#include "platform/typelib/invoke/invoke_argument.h"
#include "winbase.h"

namespace velk::typelib {
namespace {

constexpr WORD putFlags = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
constexpr WORD knownFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET | putFlags;

// A failure that is one argument's, with its index in the caller's array.
struct ArgumentError : platform::Failure {
    UINT index;
};

bool isMissing(VARIANT const& argument) {
    return argument.vt == VT_ERROR && argument.scode == DISP_E_PARAMNOTFOUND;
}

// Callers see neither the return value nor the locale.
bool isVisible(ParameterModel const& parameter) {
    return !(parameter.flags & (PARAMFLAG_FRETVAL | PARAMFLAG_FLCID));
}

constexpr UINT notGiven = static_cast<UINT>(-1);

// Which of the caller's arguments goes to which parameter.
class ArgumentMap {
  public:
    ArgumentMap(FunctionModel const& function, DISPPARAMS const& given, WORD flags)
        : parameters_(function.parameters), given_(given), sources_(parameters_.size(), notGiven) {
        for (std::size_t i = 0; i < parameters_.size(); ++i) {
            if (isVisible(parameters_[i])) visible_.push_back(i);
        }
        vararg_ = function.optionalCount == -1 && !visible_.empty();
        mapNamed(flags);
        mapPositional();
    }

    UINT sourceOf(std::size_t parameter) const { return sources_[parameter]; }
    bool isVararg(std::size_t parameter) const { return vararg_ && parameter == visible_.back(); }
    /// The arguments that a variable list takes, the first one first.
    std::vector<UINT> const& variableArguments() const { return variable_; }

  private:
    void mapNamed(WORD flags) {
        if ((flags & putFlags) && given_.cNamedArgs == 0) fail(DISP_E_PARAMNOTFOUND);
        for (UINT i = 0; i < given_.cNamedArgs; ++i) {
            DISPID const id = given_.rgdispidNamedArgs[i];
            if (id == DISPID_PROPERTYPUT && (flags & putFlags)) {
                if (visible_.empty()) fail(DISP_E_BADPARAMCOUNT);
                sources_[visible_.back()] = i;
                continue;
            }
            if (vararg_) fail(DISP_E_NONAMEDARGS);
            bool const exists = id >= 0 && static_cast<std::size_t>(id) < parameters_.size() &&
                                isVisible(parameters_[id]);
            if (!exists || sources_[id] != notGiven) {
                throw ArgumentError{{DISP_E_PARAMNOTFOUND}, i};
            }
            sources_[id] = i;
        }
    }

    void mapPositional() {
        UINT const count = given_.cArgs - given_.cNamedArgs;
        std::size_t const fixed = visible_.size() - (vararg_ ? 1 : 0);
        for (UINT i = 0; i < count; ++i) {
            UINT const source = given_.cArgs - 1 - i;
            if (i < fixed) {
                if (sources_[visible_[i]] != notGiven) fail(DISP_E_BADPARAMCOUNT);
                sources_[visible_[i]] = source;
            } else if (vararg_) {
                variable_.push_back(source);
            } else {
                fail(DISP_E_BADPARAMCOUNT);
            }
        }
    }

    std::span<ParameterModel const> parameters_;
    DISPPARAMS const& given_;
    std::vector<UINT> sources_;
    std::vector<std::size_t> visible_;
    std::vector<UINT> variable_;
    bool vararg_ = false;
};

// One call: arguments bound, the slot called, results taken.
class MemberCall {
  public:
    MemberCall(TypeInfo& owner, FunctionModel const& function, DISPPARAMS& given, WORD flags)
        : owner_(owner), function_(function), given_(given), map_(function, given, flags) {}

    HRESULT run(void* instance, VARIANT* result, EXCEPINFO* exception) {
        requireEnoughArguments();
        for (std::size_t i = 0; i < function_.parameters.size(); ++i) bindParameter(i);
        auto const resultType = resolveForInvoke(owner_.library(), function_.result);
        NativeValue returned = bindReturned(resultType);
        callSlot(instance, static_cast<USHORT>(function_.vtableOffset), natives_, returned);
        bool const resultCode = function_.result.vt == VT_HRESULT;
        auto const code = static_cast<HRESULT>(returned.integer);
        if (resultCode && FAILED(code)) return reportFailure(code, exception);
        for (auto const& argument : arguments_) argument->writeBack();
        takeResult(resultCode ? VARTYPE{VT_VOID} : resultType.type, returned, result);
        return S_OK;
    }

  private:
    // Too few arguments are a wrong count. That a certain one is missing is
    // said only where as many as are needed were given.
    void requireEnoughArguments() const {
        UINT required = 0;
        for (std::size_t i = 0; i < function_.parameters.size(); ++i) {
            if (!isVisible(function_.parameters[i]) || map_.isVararg(i)) continue;
            if (!isOptional(i)) ++required;
        }
        require(given_.cArgs >= required, DISP_E_BADPARAMCOUNT);
    }

    InvokeArgument& newArgument() {
        return *arguments_.emplace_back(std::make_unique<InvokeArgument>());
    }

    // Room for what the member itself returns.
    NativeValue bindReturned(InvokeType const& type) {
        if (type.type == VT_RECORD) {
            require(type.pointers == 0, DISP_E_BADVARTYPE);
            result_ = &newArgument();
            return result_->bindEmptyRecord(type);
        }
        auto const kind = type.pointers > 0 ? NativeKind::pointer : nativeKindOf(type.type);
        require(kind.has_value(), DISP_E_BADVARTYPE);
        NativeValue returned;
        returned.kind = *kind;
        return returned;
    }

    void bindParameter(std::size_t index) {
        auto const& parameter = function_.parameters[index];
        auto const type = resolveForInvoke(owner_.library(), parameter.type);
        if (parameter.flags & PARAMFLAG_FRETVAL) {
            result_ = &newArgument();
            natives_.push_back(result_->bindResult(type));
        } else if (parameter.flags & PARAMFLAG_FLCID) {
            NativeValue locale;
            locale.kind = NativeKind::unsigned32;
            locale.integer = GetThreadLocale();
            natives_.push_back(locale);
        } else if (map_.isVararg(index)) {
            natives_.push_back(bindVararg(type));
        } else {
            bindGiven(index, parameter, type);
        }
    }

    void bindGiven(std::size_t index, ParameterModel const& parameter, InvokeType const& type) {
        UINT const source = map_.sourceOf(index);
        bool const given = source != notGiven;
        if (!given || (isMissing(given_.rgvarg[source]) && isOptional(index))) {
            natives_.push_back(bindMissing(index, parameter, type));
            return;
        }
        try {
            natives_.push_back(newArgument().bind(given_.rgvarg[source], type, parameter.flags));
        } catch (platform::Failure const& failure) {
            throw ArgumentError{failure, source};
        }
    }

    // The last parameters may be counted as optional without being marked so.
    bool isOptional(std::size_t index) const {
        auto const& parameter = function_.parameters[index];
        if (parameter.flags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) return true;
        std::size_t after = 0;
        for (std::size_t i = index; i < function_.parameters.size(); ++i) {
            if (isVisible(function_.parameters[i])) ++after;
        }
        return function_.optionalCount > 0 &&
               after <= static_cast<std::size_t>(function_.optionalCount);
    }

    NativeValue bindMissing(std::size_t index, ParameterModel const& parameter,
                            InvokeType const& type) {
        bool const empty = !parameter.defaultValue && isOptional(index);
        if (empty && type.type == VT_RECORD) return newArgument().bindEmptyRecord(type);
        VARIANT value{};
        if (parameter.defaultValue) {
            value = parameter.defaultValue->varDefaultValue;
        } else if (!isOptional(index)) {
            fail(DISP_E_PARAMNOTOPTIONAL);
        } else if (type.type == VT_VARIANT) {
            value.vt = VT_ERROR;
            value.scode = DISP_E_PARAMNOTFOUND;
        } else {
            // What is left out is zero, empty or null.
            value.vt = type.type;
        }
        // A copy, because the member may write to what it gets by reference.
        auto& kept = *values_.emplace_back(std::make_unique<Value>());
        *kept.get() = value;
        if (value.vt == VT_BSTR && value.bstrVal) {
            kept->bstrVal = Bstr({value.bstrVal, SysStringLen(value.bstrVal)}).release();
        }
        return newArgument().bind(*kept.get(), type, parameter.flags);
    }

    NativeValue bindVararg(InvokeType const& type) {
        require(type.type == (VT_ARRAY | VT_VARIANT), DISP_E_BADVARTYPE);
        auto const& sources = map_.variableArguments();
        auto& list = *values_.emplace_back(std::make_unique<Value>());
        list->parray = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(sources.size()));
        require(list->parray, E_OUTOFMEMORY);
        list->vt = VT_ARRAY | VT_VARIANT;
        auto* elements = static_cast<VARIANT*>(list->parray->pvData);
        for (std::size_t i = 0; i < sources.size(); ++i) {
            HRESULT const copied = VariantCopy(&elements[i], &given_.rgvarg[sources[i]]);
            if (FAILED(copied)) throw ArgumentError{{copied}, sources[i]};
        }
        return NativeValue::ofPointer(type.pointers ? static_cast<void*>(&list->parray)
                                                    : list->parray);
    }

    HRESULT reportFailure(HRESULT code, EXCEPINFO* exception) {
        if (exception) {
            *exception = {};
            exception->scode = code;
        }
        return DISP_E_EXCEPTION;
    }

    void takeResult(VARTYPE returnedType, NativeValue const& returned, VARIANT* result) {
        // What the caller does not want is given up.
        Value unwanted;
        if (!result) result = unwanted.get();
        VariantInit(result);
        if (result_) {
            result_->takeResult(*result);
        } else if (returnedType != VT_VOID) {
            returned.store(returnedType, *result);
        }
    }

    TypeInfo& owner_;
    FunctionModel const& function_;
    DISPPARAMS& given_;
    ArgumentMap map_;
    std::vector<NativeValue> natives_;
    std::vector<std::unique_ptr<InvokeArgument>> arguments_;
    std::vector<std::unique_ptr<Value>> values_;
    InvokeArgument* result_ = nullptr;
};

HRESULT forward(PVOID instance, MEMBERID member, WORD flags, DISPPARAMS* parameters,
                VARIANT* result, EXCEPINFO* exception, UINT* argumentError) {
    Reference<IDispatch> dispatch;
    HRESULT const found =
        static_cast<IUnknown*>(instance)->QueryInterface(IID_IDispatch, dispatch.target());
    if (FAILED(found)) return found;
    return dispatch->Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, flags, parameters, result,
                            exception, argumentError);
}

// What counts and finds interfaces is nobody's to call by name, whether or not a
// library that describes it says so, and whether its types inherit it or spell
// it out.
bool belongsToEveryObject(TypeInfo const& owner, FunctionModel const& function) {
    GUID const id = owner.id();
    if (id == IID_IUnknown || id == IID_IDispatch) return true;
    static constexpr Text names[] = {u"QueryInterface", u"AddRef", u"Release"};
    auto const slot = static_cast<std::size_t>(function.vtableOffset) / sizeof(void*);
    return slot < std::size(names) && sameName(function.name, names[slot]);
}

bool isCallable(TypeInfo const& owner, FunctionModel const& function) {
    if (belongsToEveryObject(owner, function)) return false;
    // Restricted members are there for the type's own sake.
    return !((function.flags & FUNCFLAG_FRESTRICTED) && function.id >= 0);
}

bool isConsistent(DISPPARAMS const& parameters) {
    return parameters.cNamedArgs <= parameters.cArgs &&
           (parameters.cArgs == 0 || parameters.rgvarg) &&
           (parameters.cNamedArgs == 0 || parameters.rgdispidNamedArgs);
}

}  // namespace

HRESULT TypeInfo::Invoke(PVOID instance, MEMBERID member, WORD flags, DISPPARAMS* parameters,
                         VARIANT* result, EXCEPINFO* exception, UINT* argumentError) noexcept {
    if (!parameters || !isConsistent(*parameters) || !(flags & knownFlags)) return E_INVALIDARG;
    if (!instance) return E_INVALIDARG;
    if (kind() != TKIND_INTERFACE && kind() != TKIND_DISPATCH) return TYPE_E_WRONGTYPEKIND;
    return guarded([&] {
        auto found = findById(member, flags);
        if (found.variable || (found.function && found.function->kind == FUNC_DISPATCH)) {
            return forward(instance, member, flags, parameters, result, exception, argumentError);
        }
        if (!found.function || !isCallable(*found.owner, *found.function)) {
            return DISP_E_MEMBERNOTFOUND;
        }
        if (found.function->kind != FUNC_PUREVIRTUAL && found.function->kind != FUNC_VIRTUAL) {
            return DISP_E_MEMBERNOTFOUND;
        }
        try {
            MemberCall call(*found.owner, *found.function, *parameters, flags);
            return call.run(instance, result, exception);
        } catch (ArgumentError const& error) {
            if (argumentError) *argumentError = error.index;
            return error.code;
        }
    });
}

}  // namespace velk::typelib
