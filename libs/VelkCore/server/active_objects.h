#pragma once

#include "host/com_ptr.h"

/// The running objects that were made known under a ProgID. Any thread.
namespace velk::core {

/// The newest object of the ProgID, empty when there is none.
mzComPtrC findActiveObject(char const* progId);

/// Gives up every object, when the servers end.
void forgetActiveObjects();

}  // namespace velk::core
