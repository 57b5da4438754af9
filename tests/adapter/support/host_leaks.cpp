#include "host/host.h"
#include "support/leaks.h"

namespace {

[[maybe_unused]] bool const hostObjectsAreCounted =
    velk::test::addLeakCheck("host objects and values", [] { return mzLiveCountTotal(); });

}  // namespace
