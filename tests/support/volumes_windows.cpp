#include "support/volumes.h"

namespace velk::test {

DriveC::DriveC() = default;
DriveC::~DriveC() = default;

}  // namespace velk::test
