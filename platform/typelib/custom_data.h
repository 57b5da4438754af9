/// Custom data as callers get it.
#pragma once

#include "platform/typelib/boundary.h"
#include "platform/typelib/model.h"

namespace velk::typelib {

/// Copies of all items in task memory.
HRESULT copyCustomData(CustomData items, CUSTDATA* data);

}  // namespace velk::typelib
