// Arrays of values in arrays of values, deeper than any stack holds.

#include <gtest/gtest.h>

#include <oleauto.h>

#include "support/fake_objects.h"
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

TEST(NestedValues, AnObjectMayBeItsOwnDefaultValue) {
    FakeDispatch object;
    VARIANT self{};
    self.vt = VT_DISPATCH;
    self.pdispVal = &object;
    object.defaultValue = [&](VARIANT* value) { return VariantCopy(value, &self); };
    VARIANT result{};
    EXPECT_EQ(VariantChangeType(&result, &self, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_GT(object.calls, 1);
    EXPECT_EQ(object.references, 1U);
}

/// An object that works with arrays of its own whenever it is counted.
class BusyObject final : public FakeDispatch {
  public:
    bool copiesAreWhole = true;

    ULONG STDMETHODCALLTYPE AddRef() override {
        VARIANT own = nested(2);
        VARIANT copy{};
        LONG const first = 0;
        HRESULT const result = SafeArrayGetElement(own.parray, const_cast<LONG*>(&first), &copy);
        VariantClear(&own);
        copiesAreWhole = copiesAreWhole && result == S_OK && levelsOf(copy) == 2;
        VariantClear(&copy);
        return FakeDispatch::AddRef();
    }
};

TEST(NestedValues, AreWholeForObjectsInThem) {
    for (int depth = 1; depth <= 40; ++depth) {
        BusyObject object;
        VARIANT value{};
        value.vt = VT_DISPATCH;
        value.pdispVal = &object;
        object.FakeDispatch::AddRef();
        for (int level = 0; level < depth; ++level) {
            SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
            static_cast<VARIANT*>(array->pvData)[0] = value;
            value.vt = VT_ARRAY | VT_VARIANT;
            value.parray = array;
        }
        VARIANT copy{};
        EXPECT_EQ(VariantCopy(&copy, &value), S_OK);
        EXPECT_TRUE(object.copiesAreWhole) << depth;
        EXPECT_EQ(object.references, 3U);
        EXPECT_EQ(VariantClear(&value), S_OK);
        EXPECT_EQ(VariantClear(&copy), S_OK);
        EXPECT_EQ(object.references, 1U);
    }
}

}  // namespace
