#pragma once

#include "host/execute_exception.h"
#include "host/single_thread_use.h"

namespace velk::core {

/// The calling thread's stay in an object; fails the running member call while
/// another thread is inside.
class RequiredUse {
  public:
    RequiredUse(mzSingleThreadUseC& object, char const* operation) : use_(object) {
        if (!use_.granted()) mzThrowExecuteException(mzInUseText, operation, 1);
    }

  private:
    mzSingleThreadUseC::Use use_;
};

}  // namespace velk::core
