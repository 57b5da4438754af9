// The module's slot of last exceptions, for tests that link its parts.

#include "process_objects.h"

namespace velk::adapter {

LastExceptionSlot lastExceptionSlot;

}  // namespace velk::adapter
