#pragma once

#include <exception>
#include <string>

#include "host/com_string.h"
#include "host/export.h"

/// Raised inside a script object's member to fail the script's call. The
/// runtime's `invokeByName` turns it into an `mzIException`.
class VELKCORE_API mzExecuteExceptionC : public std::exception {
  public:
    mzExecuteExceptionC(mzComStringC message, mzComStringC operation, int code);
    mzExecuteExceptionC(mzExecuteExceptionC const&) = default;
    ~mzExecuteExceptionC() override;

    /// The text for the script.
    mzComStringC const& message() const noexcept { return message_; }
    /// The member or operation that failed.
    mzComStringC const& operation() const noexcept { return operation_; }
    int code() const noexcept { return code_; }
    char const* what() const noexcept override;

  private:
    mzComStringC message_;
    mzComStringC operation_;
    int code_;
    std::string what_;
};

/// Raised when an argument cannot be read as the type that a member takes.
class VELKCORE_API mzAutoTypeCastExceptionC : public mzExecuteExceptionC {
  public:
    mzAutoTypeCastExceptionC();
    ~mzAutoTypeCastExceptionC() override;
};

/// Raises `mzExecuteExceptionC`; what `proxyObjectC::throwExecuteException` calls.
[[noreturn]] VELKCORE_API void mzThrowExecuteException(mzComStringC const& message,
                                                       mzComStringC const& operation, int code);
/// Raises `mzAutoTypeCastExceptionC`.
[[noreturn]] VELKCORE_API void mzThrowAutoTypeCastException();
