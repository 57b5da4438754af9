// Methods of the faulty object whose successes are wrong.
#include "servers/automation/faulty_method.h"

#include "com/owners.h"

namespace velk::test::server {
namespace {

constexpr VARTYPE typeThatDoesNotExist = 0x0FFE;
constexpr VARTYPE typeOfAllBits = 0x7FFF;

/// A result of this type whose every other byte is zero.
template <VARTYPE type>
HRESULT emptyOf(Faulty&, FaultyCall const& call) {
    if (!call.result) return S_OK;
    *call.result = {};
    call.result->vt = type;
    return S_OK;
}

HRESULT answerNumber(FaultyCall const& call, HRESULT code, LONG number) {
    if (call.result) {
        *call.result = {};
        call.result->vt = VT_I4;
        call.result->lVal = number;
    }
    return code;
}

HRESULT successWithoutResult(Faulty&, FaultyCall const&) {
    return S_OK;
}

HRESULT answersFalse(Faulty&, FaultyCall const& call) {
    return answerNumber(call, S_FALSE, 7);
}

HRESULT positiveCode(Faulty&, FaultyCall const& call) {
    VARIANT* const number = call.argument(0);
    com::Variant converted;
    if (!number) return DISP_E_BADPARAMCOUNT;
    HRESULT const code = com::changeType(*number, VT_I4, converted);
    if (FAILED(code)) return code;
    LONG const positive = converted.get().lVal;
    return positive < 0 ? E_INVALIDARG : answerNumber(call, positive, positive);
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

HRESULT embeddedNull(Faulty&, FaultyCall const& call) {
    constexpr com::TextView text(OLESTR("before\0after"), 12);
    if (!call.result) return S_OK;
    *call.result = {};
    call.result->bstrVal = com::makeBstr(text).release();
    call.result->vt = VT_BSTR;
    return S_OK;
}

constexpr FaultyMethod results[] = {
    {"SuccessWithoutResult", successWithoutResult},
    {"AnswersFalse", answersFalse},
    {"PositiveCode", positiveCode},
    {"BadType", emptyOf<typeThatDoesNotExist>},
    {"BadTypeAllBits", emptyOf<typeOfAllBits>},
    {"NullRecord", emptyOf<VT_RECORD>},
    {"NullArray", emptyOf<VT_ARRAY | VT_I4>},
    {"NullByRef", emptyOf<VT_BYREF | VT_I4>},
    {"SelfReference", selfReference},
    {"NullDispatch", emptyOf<VT_DISPATCH>},
    {"EmbeddedNull", embeddedNull},
};

}  // namespace

std::span<FaultyMethod const> faultyResults() {
    return results;
}

}  // namespace velk::test::server
