/// Native values and calls in few words.
#pragma once

#include <initializer_list>
#include <vector>

#include "com/owners.h"

namespace velk::test {

/// A VARIANT of a type whose content is written by `fill`.
template <typename Fill>
VARIANT makeValue(VARTYPE type, Fill fill) {
    VARIANT value{};
    value.vt = type;
    fill(value);
    return value;
}

inline VARIANT integerValue(LONG number) {
    return makeValue(VT_I4, [&](VARIANT& value) { value.lVal = number; });
}

inline VARIANT referenceTo(VARIANT& target) {
    return makeValue(VT_BYREF | VT_VARIANT, [&](VARIANT& value) { value.pvarVal = &target; });
}

/// The arguments of a call, written by the caller in reading order.
class Arguments {
  public:
    Arguments(std::initializer_list<VARIANT> values)
        : reversed_(std::rbegin(values), std::rend(values)) {
        parameters_.rgvarg = reversed_.empty() ? nullptr : reversed_.data();
        parameters_.cArgs = static_cast<UINT>(reversed_.size());
    }
    Arguments(Arguments const&) = delete;

    /// Marks the last argument as the new value of a property.
    Arguments& asPropertyPut() {
        parameters_.rgdispidNamedArgs = &putId_;
        parameters_.cNamedArgs = 1;
        return *this;
    }
    DISPPARAMS* get() { return &parameters_; }

  private:
    std::vector<VARIANT> reversed_;
    DISPPARAMS parameters_{};
    DISPID putId_ = DISPID_PROPERTYPUT;
};

/// What one native call answered.
struct CallOutcome {
    HRESULT code;
    com::Variant result;
    com::ExceptionInfo exception;
};

inline CallOutcome invoke(IDispatch& object, DISPID member, WORD flags, DISPPARAMS* parameters) {
    CallOutcome outcome{};
    outcome.code = object.Invoke(member, IID_NULL, 0, flags, parameters, outcome.result.put(),
                                 outcome.exception.put(), nullptr);
    return outcome;
}

inline DISPID idOf(IDispatch& object, std::basic_string<OLECHAR> name) {
    LPOLESTR names[] = {name.data()};
    DISPID id = DISPID_UNKNOWN;
    return SUCCEEDED(object.GetIDsOfNames(IID_NULL, names, 1, 0, &id)) ? id : DISPID_UNKNOWN;
}

}  // namespace velk::test
