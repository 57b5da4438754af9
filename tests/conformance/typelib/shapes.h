/// The library of shapes that the tests load.
#pragma once

#include "type_access.h"

namespace velk::test {

/// The path of a file that the build made for these tests.
Wide shapesPath();
/// The loaded library; a failure ends the test program's assertion.
Owned<ITypeLib> loadShapes();

/// An identifier of the library: they differ in their last byte.
GUID shapesId(BYTE last);

}  // namespace velk::test
