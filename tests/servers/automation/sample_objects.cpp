// Objects, recorded calls, and the second interface.
#include "com/type_info_holder.h"
#include "servers/automation/giving.h"
#include "servers/automation/late_call.h"
#include "servers/automation/sample.h"

namespace velk::test::server {
namespace {

com::TypeInfoHolder classInfo({&sampleClass, &testLibrary, 1, 0});

bool isMissing(VARIANT const& value) {
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

com::ComPtr<IUnknown> identity(IUnknown* object) {
    return com::ComPtr<IUnknown>(object).query<IUnknown>(IID_IUnknown);
}

}  // namespace

HRESULT Sample::CallBack(IDispatch* object, BSTR method, VARIANT argument,
                         VARIANT* result) noexcept {
    if (!result) return E_POINTER;
    VariantInit(result);
    try {
        com::Variant answer;
        com::ExceptionInfo exception;
        HRESULT const code =
            callLate(object, method, &argument, isMissing(argument) ? 0 : 1, answer, exception);
        *result = answer.release();
        auto* const call = CallOutcome::current();
        if (FAILED(code) && call && code == DISP_E_EXCEPTION) call->fail(std::move(exception));
        if (FAILED(code) && call && code != DISP_E_EXCEPTION) call->answer(code);
        return code;
    }
    VELK_COM_CATCH
}

HRESULT Sample::Same(IUnknown* first, IUnknown* second, VARIANT_BOOL* result) noexcept {
    bool const same = identity(first) == identity(second);
    return give(result, VARIANT_BOOL(same ? VARIANT_TRUE : VARIANT_FALSE));
}

HRESULT Sample::RecordedCalls(SAFEARRAY** result) noexcept {
    return record_.give(result);
}

HRESULT Sample::ClearRecorded() noexcept {
    record_.clear();
    return S_OK;
}

HRESULT Sample::Twice(LONG number, LONG* result) noexcept {
    return give(result, 2 * number);
}

HRESULT Sample::get_ExtraName(BSTR* result) noexcept {
    try {
        std::lock_guard const guard(mutex_);
        return giveText(result, OLESTR("extra ") + name_);
    }
    VELK_COM_CATCH
}

HRESULT Sample::GetClassInfo(ITypeInfo** type) noexcept {
    return com::getTypeInfo(classInfo, 0, LOCALE_USER_DEFAULT, type);
}

}  // namespace velk::test::server
