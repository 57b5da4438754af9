/// Custom data as callers get it.
#pragma once

#include "platform/typelib/boundary.h"
#include "platform/typelib/model.h"

namespace velk::typelib {

/// A copy of the value of an identifier; empty where there is none.
HRESULT copyCustomValue(CustomData items, REFGUID id, VARIANT* value);

/// Copies of all items in task memory.
HRESULT copyCustomData(CustomData items, CUSTDATA* data);

}  // namespace velk::typelib
