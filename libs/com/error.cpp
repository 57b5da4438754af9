#include "com/error.h"

#include <cstdint>
#include <cstdio>
#include <new>
#include <utility>

namespace velk::com {

Error::Error(HRESULT code, std::string message) : code_(code), message_(std::move(message)) {
    if (message_.empty()) message_ = hexadecimal(code);
}

HRESULT throwIfFailed(HRESULT code) {
    if (FAILED(code)) throw Error(code);
    return code;
}

HRESULT throwIfFailed(HRESULT code, char const* what) {
    if (FAILED(code)) throw Error(code, std::string(what) + ": " + hexadecimal(code));
    return code;
}

void throwIfError(LSTATUS status, std::string const& what) {
    if (status == ERROR_SUCCESS) return;
    HRESULT const code = HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    throw Error(code, what + ": " + hexadecimal(code));
}

HRESULT translateException() noexcept {
    try {
        throw;
    } catch (Error const& error) {
        // A success code inside an exception would hide the failure.
        return FAILED(error.code()) ? error.code() : E_UNEXPECTED;
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    } catch (std::exception const&) {
        return E_FAIL;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

std::string hexadecimal(HRESULT code) {
    char text[11];
    std::snprintf(text, sizeof text, "0x%08X",
                  static_cast<unsigned>(static_cast<std::uint32_t>(code)));
    return text;
}

}  // namespace velk::com
