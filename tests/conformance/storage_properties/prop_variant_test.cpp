#include "conformance/storage_properties/property_set_file.h"

// PropVariantClear. What is not given back is counted by the
// test program's own end, on the layer.

namespace {

using namespace velk::test;

TEST(PropVariants, OfUnknownTypesAreEmptiedWithAnError) {
    for (int const type : {0x123, VT_BYREF | VT_I4}) {
        PROPVARIANT value{};
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(PropVariantClear(&value), STG_E_INVALIDPARAMETER) << type;
        EXPECT_EQ(value.vt, VT_EMPTY) << type;
    }
    EXPECT_EQ(PropVariantClear(nullptr), S_OK);
}

}  // namespace
