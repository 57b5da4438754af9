// What is wrong with the faulty object, by name.
#include <stdexcept>

#include "servers/automation/faulty.h"
#include "servers/automation/giving.h"
#include "servers/automation/late_call.h"

namespace velk::test::server {
namespace {

constexpr VARTYPE typeThatDoesNotExist = 0x0FFE;
constexpr VARTYPE typeOfAllBits = 0x7FFF;
constexpr UINT garbageIndex = 0xDEADBEEF;

/// Leaves `value` as the result.
HRESULT answer(FaultyCall const& call, com::Variant value, HRESULT code = S_OK) {
    if (call.result) *call.result = value.release();
    return code;
}

/// A result of this type whose every other byte is zero.
template <VARTYPE type>
HRESULT emptyOf(Faulty&, FaultyCall const& call) {
    if (call.result) {
        *call.result = {};
        call.result->vt = type;
    }
    return S_OK;
}

HRESULT positiveCode(Faulty&, FaultyCall const& call) {
    com::Variant converted;
    if (!call.argument(0)) return DISP_E_BADPARAMCOUNT;
    HRESULT const code = com::changeType(*call.argument(0), VT_I4, converted);
    if (FAILED(code)) return code;
    LONG const positive = converted.get().lVal;
    return positive < 0 ? E_INVALIDARG : answer(call, numberVariant(positive), positive);
}

HRESULT selfReference(Faulty&, FaultyCall const& call) {
    static VARIANT circle = [] {
        VARIANT value{};
        value.pvarVal = &circle;
        value.vt = VT_BYREF | VT_VARIANT;
        return value;
    }();
    if (call.result) *call.result = circle;
    return S_OK;
}

/// DISP_E_EXCEPTION with an EXCEPINFO that `fill` has changed from zeros.
template <void (*fill)(EXCEPINFO&)>
HRESULT exceptionWith(Faulty&, FaultyCall const& call) {
    if (call.exception) {
        *call.exception = {};
        fill(*call.exception);
    }
    return DISP_E_EXCEPTION;
}

HRESULT STDAPICALLTYPE fillIn(EXCEPINFO* info) {
    info->bstrSource = com::makeBstr(OLESTR("Faulty")).release();
    info->bstrDescription = com::makeBstr(OLESTR("filled in later")).release();
    info->scode = static_cast<HRESULT>(0x80040301U);
    return S_OK;
}
HRESULT STDAPICALLTYPE failToFillIn(EXCEPINFO*) {
    return E_FAIL;
}
HRESULT STDAPICALLTYPE throwInsteadOfFillingIn(EXCEPINFO*) {
    throw std::runtime_error("instead of filling in");
}
template <HRESULT(STDAPICALLTYPE* function)(EXCEPINFO*)>
void fillInLater(EXCEPINFO& info) {
    info.pfnDeferredFillIn = function;
}

void describeAtLength(EXCEPINFO& info) {
    std::basic_string<OLECHAR> const text(1000000, OLESTR('x'));
    info.bstrDescription = com::makeBstr(text).release();
    info.scode = E_FAIL;
}

template <HRESULT code>
HRESULT garbageArgument(Faulty&, FaultyCall const& call) {
    if (call.argumentError) *call.argumentError = garbageIndex;
    return code;
}

/// The value behind a reference to a VARIANT, else the value itself.
VARIANT& direct(VARIANT& value) {
    bool const reference = value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal;
    return reference ? *value.pvarVal : value;
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

HRESULT changeTypeOfByRef(Faulty&, FaultyCall const& call) {
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

constexpr FaultyMethod methods[] = {
    // Successes and results that are wrong. Some leave the result untouched,
    {"SuccessWithoutResult", [](Faulty&, FaultyCall const&) -> HRESULT { return S_OK; }},
    {"AnswersFalse",
     [](Faulty&, FaultyCall const& call) { return answer(call, numberVariant(7), S_FALSE); }},
    // one gives the argument n as code and as result,
    {"PositiveCode", positiveCode},
    {"BadType", emptyOf<typeThatDoesNotExist>},
    {"BadTypeAllBits", emptyOf<typeOfAllBits>},
    // a record without information, an array that is none, a reference to nowhere,
    {"NullRecord", emptyOf<VT_RECORD>},
    {"NullArray", emptyOf<VT_ARRAY | VT_I4>},
    {"NullByRef", emptyOf<VT_BYREF | VT_I4>},
    {"SelfReference", selfReference},
    {"NullDispatch", emptyOf<VT_DISPATCH>},
    // a text with a zero character inside.
    {"EmbeddedNull",
     [](Faulty&, FaultyCall const& call) {
         return answer(call, textVariant({OLESTR("before\0after"), 12}));
     }},

    // Failures: what a server makes of its own exception, and one that gets out,
    {"Throws", [](Faulty&, FaultyCall const&) -> HRESULT { return E_UNEXPECTED; }},
    {"ThrowsAcross",
     [](Faulty&, FaultyCall const&) -> HRESULT { throw std::runtime_error("across"); }},
    // details that come later, or do not,
    {"DeferredFillIn", exceptionWith<fillInLater<fillIn>>},
    {"DeferredFails", exceptionWith<fillInLater<failToFillIn>>},
    {"DeferredThrows", exceptionWith<fillInLater<throwInsteadOfFillingIn>>},
    // indexes of arguments that there are not,
    {"GarbageArgumentIndex", garbageArgument<DISP_E_TYPEMISMATCH>},
    {"UnsetArgumentIndex",
     [](Faulty&, FaultyCall const&) -> HRESULT { return DISP_E_TYPEMISMATCH; }},
    {"ParamNotFoundGarbage", garbageArgument<DISP_E_PARAMNOTFOUND>},
    // and exceptions with nothing, a success, or a million characters.
    {"ExceptionWithoutInfo", exceptionWith<[](EXCEPINFO&) {}>},
    {"ExceptionSuccessCode", exceptionWith<[](EXCEPINFO& info) { info.wCode = 1001; }>},
    {"LongText", exceptionWith<describeAtLength>},

    // What it does to itself and to others: this call succeeds, every later one
    // answers RPC_E_DISCONNECTED;
    {"Vanish",
     [](Faulty& object, FaultyCall const&) -> HRESULT {
         object.vanish();
         return S_OK;
     }},
    // (object, method) calls that method of that object with the same two
    // arguments; a VT_BYREF|VT_VARIANT argument becomes the text "changed".
    {"Recurse", recurse},
    {"ChangesTypeOfByRef", changeTypeOfByRef},
    // As the sample's.
    {"RecordedCalls", recordedCalls},
    {"ClearRecorded",
     [](Faulty& object, FaultyCall const&) -> HRESULT {
         object.record().clear();
         return S_OK;
     }},
};

}  // namespace

std::span<FaultyMethod const> faultyMethods() {
    return methods;
}

}  // namespace velk::test::server
