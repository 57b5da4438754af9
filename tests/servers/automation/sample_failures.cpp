// Members that fail.
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {

// A member that is called through its vtable has its result code only.

HRESULT Sample::Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                     LONG helpContext) noexcept {
    try {
        com::ExceptionInfo info;
        info.address()->scode = code;
        info.address()->bstrSource = com::makeBstr(com::viewBstr(source)).release();
        info.address()->bstrDescription = com::makeBstr(com::viewBstr(description)).release();
        info.address()->bstrHelpFile = com::makeBstr(com::viewBstr(helpFile)).release();
        info.address()->dwHelpContext = static_cast<DWORD>(helpContext);
        if (auto* const call = CallOutcome::current()) call->fail(std::move(info));
        return E_FAIL;
    }
    VELK_COM_CATCH
}

HRESULT Sample::FailPlain(LONG code) noexcept {
    auto* const call = CallOutcome::current();
    if (!call) return code;
    call->answer(code);
    return E_FAIL;
}

HRESULT Sample::FailByCode(LONG code) noexcept {
    return code;
}

HRESULT Sample::Mismatch(VARIANT, VARIANT, VARIANT, LONG position) noexcept {
    if (auto* const call = CallOutcome::current()) {
        call->refuse(DISP_E_TYPEMISMATCH, static_cast<UINT>(position));
    }
    return DISP_E_TYPEMISMATCH;
}

}  // namespace velk::test::server
