#include "host/execute_exception.h"

mzExecuteExceptionC::mzExecuteExceptionC(mzComStringC message, mzComStringC operation, int code)
    : message_(std::move(message)),
      operation_(std::move(operation)),
      code_(code),
      what_(message_.toUtf8()) {}

mzExecuteExceptionC::~mzExecuteExceptionC() = default;

char const* mzExecuteExceptionC::what() const noexcept {
    return what_.c_str();
}

mzAutoTypeCastExceptionC::mzAutoTypeCastExceptionC()
    : mzExecuteExceptionC("Argument cannot be converted to the type that is expected", "", 1) {}

mzAutoTypeCastExceptionC::~mzAutoTypeCastExceptionC() = default;

void mzThrowExecuteException(mzComStringC const& message, mzComStringC const& operation, int code) {
    throw mzExecuteExceptionC(message, operation, code);
}

void mzThrowAutoTypeCastException() {
    throw mzAutoTypeCastExceptionC();
}
