/// Failures as exceptions inside, as result codes at the boundary.
#pragma once

#include <exception>
#include <string>

#include <windows.h>

namespace velk::com {

/// A failure that carries the HRESULT it becomes at the boundary.
class Error : public std::exception {
  public:
    /// `code` is a failing HRESULT; `message` is English text in UTF-8.
    explicit Error(HRESULT code, std::string message = {});

    HRESULT code() const noexcept { return code_; }
    char const* what() const noexcept override { return message_.c_str(); }

  private:
    HRESULT code_;
    std::string message_;
};

/// Throws Error when `code` is a failure (negative); passes successes on.
HRESULT throwIfFailed(HRESULT code);

/// Throws Error(code) with "`what`: 0x........" as its message.
HRESULT throwIfFailed(HRESULT code, char const* what);

/// Throws Error for the system error number `status` unless it is 0.
void throwIfError(LSTATUS status, std::string const& what);

/// The HRESULT of the exception being handled: Error its own code, no memory
/// E_OUTOFMEMORY, other standard exceptions E_FAIL, anything else
/// E_UNEXPECTED. Only to be called inside a catch block.
HRESULT translateException() noexcept;

/// "0x" and eight upper-case hexadecimal digits.
std::string hexadecimal(HRESULT code);

}  // namespace velk::com

/// The catch block of every function that foreign code calls.
#define VELK_COM_CATCH                            \
    catch (...) {                                 \
        return ::velk::com::translateException(); \
    }
