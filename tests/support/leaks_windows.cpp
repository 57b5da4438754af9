#include "support/leaks.h"

namespace velk::test {

// The system's own libraries do not tell what they have handed out.
void addNativeLeakChecks() {}

}  // namespace velk::test
