#include "support/expected_difference.h"

namespace velk::test {

System runningSystem() noexcept {
    return System::ownLayer;
}

}  // namespace velk::test
