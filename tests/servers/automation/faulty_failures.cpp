// Methods of the faulty object that fail.
#include "servers/automation/faulty_method.h"

#include <stdexcept>

#include "com/owners.h"

namespace velk::test::server {
namespace {

constexpr UINT garbageIndex = 0xDEADBEEF;
constexpr std::size_t longTextLength = 1000000;
constexpr HRESULT filledInCode = static_cast<HRESULT>(0x80040301U);

HRESULT throws(Faulty&, FaultyCall const&) {
    try {
        throw std::runtime_error("inside");
    } catch (std::exception const&) {
        return E_UNEXPECTED;
    }
}

HRESULT throwsAcross(Faulty&, FaultyCall const&) {
    throw std::runtime_error("across the boundary");
}

HRESULT STDAPICALLTYPE fillIn(EXCEPINFO* info) {
    info->bstrSource = com::makeBstr(OLESTR("Faulty")).release();
    info->bstrDescription = com::makeBstr(OLESTR("filled in later")).release();
    info->scode = filledInCode;
    return S_OK;
}
HRESULT STDAPICALLTYPE failToFillIn(EXCEPINFO*) {
    return E_FAIL;
}
HRESULT STDAPICALLTYPE throwInsteadOfFillingIn(EXCEPINFO*) {
    throw std::runtime_error("instead of filling in");
}

template <HRESULT(STDAPICALLTYPE* function)(EXCEPINFO*)>
HRESULT deferred(Faulty&, FaultyCall const& call) {
    if (call.exception) {
        *call.exception = {};
        call.exception->pfnDeferredFillIn = function;
    }
    return DISP_E_EXCEPTION;
}

template <HRESULT code>
HRESULT garbageArgument(Faulty&, FaultyCall const& call) {
    if (call.argumentError) *call.argumentError = garbageIndex;
    return code;
}

HRESULT unsetArgumentIndex(Faulty&, FaultyCall const&) {
    return DISP_E_TYPEMISMATCH;
}

HRESULT exceptionWithoutInfo(Faulty&, FaultyCall const& call) {
    if (call.exception) *call.exception = {};
    return DISP_E_EXCEPTION;
}

HRESULT exceptionSuccessCode(Faulty&, FaultyCall const& call) {
    if (call.exception) {
        *call.exception = {};
        call.exception->wCode = 1001;
    }
    return DISP_E_EXCEPTION;
}

HRESULT longText(Faulty&, FaultyCall const& call) {
    if (call.exception) {
        *call.exception = {};
        std::basic_string<OLECHAR> const text(longTextLength, OLESTR('x'));
        call.exception->bstrDescription = com::makeBstr(text).release();
        call.exception->scode = E_FAIL;
    }
    return DISP_E_EXCEPTION;
}

constexpr FaultyMethod failures[] = {
    {"Throws", throws},
    {"ThrowsAcross", throwsAcross},
    {"DeferredFillIn", deferred<fillIn>},
    {"DeferredFails", deferred<failToFillIn>},
    {"DeferredThrows", deferred<throwInsteadOfFillingIn>},
    {"GarbageArgumentIndex", garbageArgument<DISP_E_TYPEMISMATCH>},
    {"UnsetArgumentIndex", unsetArgumentIndex},
    {"ParamNotFoundGarbage", garbageArgument<DISP_E_PARAMNOTFOUND>},
    {"ExceptionWithoutInfo", exceptionWithoutInfo},
    {"ExceptionSuccessCode", exceptionSuccessCode},
    {"LongText", longText},
};

}  // namespace

std::span<FaultyMethod const> faultyFailures() {
    return failures;
}

}  // namespace velk::test::server
