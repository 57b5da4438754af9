/// The library of shapes that the tests load.
#pragma once

#include <filesystem>

#include "type_access.h"

namespace velk::test {

/// The path of the file that the build made.
inline Wide shapesPath() {
    return std::filesystem::path(VELK_SHAPES_TLB).string<OLECHAR>();
}

/// The loaded library; a failure fails the running test.
inline Owned<ITypeLib> loadShapes() {
    return loadLibrary(VELK_SHAPES_TLB);
}

/// An identifier of the library: they differ in their last byte.
inline GUID shapesId(BYTE last) {
    return {0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, last}};
}

}  // namespace velk::test
