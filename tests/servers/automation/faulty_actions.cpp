// Methods of the faulty object that do something to others or to itself.
#include "servers/automation/faulty.h"
#include "servers/automation/giving.h"
#include "servers/automation/late_call.h"

namespace velk::test::server {
namespace {

/// The value behind a reference to a VARIANT, else the value itself.
VARIANT& direct(VARIANT& value) {
    bool const reference = value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal;
    return reference ? *value.pvarVal : value;
}

HRESULT vanish(Faulty& object, FaultyCall const&) {
    object.vanish();
    return S_OK;
}

HRESULT recurse(Faulty&, FaultyCall const& call) {
    if (call.parameters.cArgs != 2) return DISP_E_BADPARAMCOUNT;
    auto const& object = direct(*call.argument(0));
    auto const& method = direct(*call.argument(1));
    if (object.vt != VT_DISPATCH || method.vt != VT_BSTR) return DISP_E_TYPEMISMATCH;
    com::Variant result;
    com::ExceptionInfo exception;
    return callLate(object.pdispVal, method.bstrVal, call.parameters.rgvarg, 2, result, exception);
}

HRESULT changesTypeOfByRef(Faulty&, FaultyCall const& call) {
    VARIANT* const argument = call.argument(0);
    bool const reference = argument && argument->vt == (VT_BYREF | VT_VARIANT) && argument->pvarVal;
    if (!reference) return DISP_E_TYPEMISMATCH;
    com::Variant const old(*argument->pvarVal);
    *argument->pvarVal = textVariant(OLESTR("changed")).release();
    return S_OK;
}

HRESULT recordedCalls(Faulty& object, FaultyCall const& call) {
    if (!call.result) return S_OK;
    *call.result = {};
    HRESULT const code = object.record().give(&call.result->parray);
    if (SUCCEEDED(code)) call.result->vt = VT_ARRAY | VT_BSTR;
    return code;
}

HRESULT clearRecorded(Faulty& object, FaultyCall const&) {
    object.record().clear();
    return S_OK;
}

constexpr FaultyMethod actions[] = {
    {"Vanish", vanish},
    {"Recurse", recurse},
    {"ChangesTypeOfByRef", changesTypeOfByRef},
    {"RecordedCalls", recordedCalls},
    {"ClearRecorded", clearRecorded},
};

}  // namespace

std::span<FaultyMethod const> faultyActions() {
    return actions;
}

}  // namespace velk::test::server
