#include "shapes.h"

#include <filesystem>

namespace velk::test {

Wide shapesPath() {
    return std::filesystem::path(VELK_SHAPES_TLB).string<OLECHAR>();
}

Owned<ITypeLib> loadShapes() {
    return loadLibrary(VELK_SHAPES_TLB);
}

GUID shapesId(BYTE last) {
    return {0x3D1B5C02, 0x7A64, 0x4E0F, {0x9C, 0x53, 0x1F, 0x2A, 0x6B, 0x8E, 0x0D, last}};
}

}  // namespace velk::test
