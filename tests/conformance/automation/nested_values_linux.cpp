// Arrays of values in arrays of values, deeper than any stack holds.

#include <gtest/gtest.h>

#include <oleauto.h>

#include "support/small_stack.h"

namespace {

using namespace velk::test;

VARIANT nested(int depth) {
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(OLESTR("innermost"));
    for (int level = 0; level < depth; ++level) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 2);
        auto* const elements = static_cast<VARIANT*>(array->pvData);
        elements[0] = value;
        elements[1].vt = VT_BSTR;
        elements[1].bstrVal = SysAllocString(OLESTR("beside"));
        value.vt = VT_ARRAY | VT_VARIANT;
        value.parray = array;
    }
    return value;
}

/// How many levels hold all that `nested` puts there; the innermost text alone
/// counts as one more.
int levelsOf(VARIANT const& value) {
    int levels = 0;
    VARIANT const* at = &value;
    for (; at->vt == (VT_ARRAY | VT_VARIANT); ++levels) {
        auto const* const elements = static_cast<VARIANT const*>(at->parray->pvData);
        if (elements[1].vt != VT_BSTR || SysStringLen(elements[1].bstrVal) != 6) return levels;
        at = &elements[0];
    }
    return at->vt == VT_BSTR && SysStringLen(at->bstrVal) == 9 ? levels + 1 : levels;
}

TEST(NestedValues, AreCopiedAndClearedAtAnyDepth) {
    for (int const depth : {0, 1, 15, 16, 17, 40, greatDepth}) {
        ASSERT_TRUE(withSmallStack([depth] {
            VARIANT value = nested(depth);
            VARIANT copy{};
            EXPECT_EQ(VariantCopy(&copy, &value), S_OK);
            EXPECT_EQ(levelsOf(copy), depth + 1);
            EXPECT_EQ(VariantClear(&value), S_OK);
            EXPECT_EQ(levelsOf(copy), depth + 1);
            EXPECT_EQ(VariantClear(&copy), S_OK);
        }));
    }
}

}  // namespace
