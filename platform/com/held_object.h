/// Counted references to foreign objects.
#pragma once

#include <unknwn.h>

#include "platform/system/boundary.h"
#include "platform/system/reference.h"

namespace velk::platform::com {

template <typename Interface = IUnknown>
using HeldObject = Reference<Interface>;

/// What foreign code answers that is asked for an object, whatever it does with
/// the place for it: success with an object, or a failure without one.
template <typename Question>
HRESULT askForObject(void** object, Question&& question) noexcept {
    *object = nullptr;
    HRESULT const result = guarded(question);
    if (FAILED(result)) *object = nullptr;
    return SUCCEEDED(result) && *object == nullptr ? E_NOINTERFACE : result;
}

}  // namespace velk::platform::com
