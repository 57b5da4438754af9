#include "com/critical_section.h"

#include <system_error>

#include "com/error.h"

namespace velk::com {

HRESULT CriticalSection::initialise() noexcept {
    try {
        if (!mutex_) mutex_.emplace();
        return S_OK;
    } catch (std::system_error const& error) {
        HRESULT const code = HRESULT_FROM_WIN32(static_cast<DWORD>(error.code().value()));
        return FAILED(code) ? code : E_FAIL;
    }
    VELK_COM_CATCH
}

}  // namespace velk::com
