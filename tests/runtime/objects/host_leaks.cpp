#include "host/diagnostics.h"
#include "support/leaks.h"

// Everything that the runtime counts must be gone when the tests are over.
static bool const added =
    velk::test::addLeakCheck("host objects and strings", [] { return mzLiveCountTotal(); });
