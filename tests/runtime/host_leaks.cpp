#include "host/diagnostics.h"
#include "support/leaks.h"

namespace {

[[maybe_unused]] bool const checked =
    velk::test::addLeakCheck("host objects and texts", [] { return mzLiveCountTotal(); });

}  // namespace
