/// A counted reference to a foreign object.
#pragma once

#include <unknwn.h>

#include "platform/system/reference.h"

namespace velk::platform::com {

template <typename Interface = IUnknown>
using HeldObject = Reference<Interface>;

}  // namespace velk::platform::com
