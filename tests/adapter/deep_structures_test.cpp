#include <gtest/gtest.h>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "host/dictionary.h"
#include "native_to_host/facade.h"
#include "support/expected_difference.h"
#include "support/small_stack.h"

// Structures that go back and forth between the two object models end level by
// level on both sides, on a stack of any size.

namespace {

using velk::adapter::createBoundFacade;
using velk::com::ComPtr;
using velk::com::Variant;
using velk::test::greatDepth;

mzComVariantC valueOf(mzIUnknown* object) {
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(object));
    return value;
}

/// A native object that stands for a dictionary with `inner` in it.
ComPtr<Ivelkdspwrap> facadeOfDictionary(mzComVariantC const& inner) {
    mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
    dictionary->addObj("next", inner);
    ComPtr<Ivelkdspwrap> facade;
    EXPECT_EQ(createBoundFacade(dictionary.iface(), facade), S_OK);
    return facade;
}

mzComVariantC inDispatchWrapper(mzComVariantC const& inner) {
    auto* const wrapper = new vbsComDispatchWrapperC(facadeOfDictionary(inner).get());
    return valueOf(wrapper->getIUnknown());
}

mzComVariantC inNativeArray(mzComVariantC const& inner) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    VARIANT element{};
    element.vt = VT_DISPATCH;
    ComPtr<Ivelkdspwrap> const facade = facadeOfDictionary(inner);
    element.pdispVal = facade.get();
    LONG const first = 0;
    EXPECT_EQ(SafeArrayPutElement(array, const_cast<LONG*>(&first), &element), S_OK);
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = array;
    return valueOf(vbsComVariantWrapperC::make(Variant(value)).iface());
}

struct Nesting {
    char const* name;
    mzComVariantC (*enclose)(mzComVariantC const& inner);
    int depth;
};

class DeepCrossings : public testing::TestWithParam<Nesting> {};

TEST_P(DeepCrossings, GoWithTheirOutermostObject) {
    // Wine searches its table of interfaces from end to end for each of them.
    int const depth = GetParam().depth / (velk::test::runsOn(velk::test::System::wine) ? 5 : 1);
    long long const before = mzLiveCount(mzLiveKindE::hostObject);
    ASSERT_TRUE(velk::test::withSmallStack([before, depth] {
        mzComVariantC outermost;
        for (int level = 0; level < depth; ++level) outermost = GetParam().enclose(outermost);
        EXPECT_GE(mzLiveCount(mzLiveKindE::hostObject), before + 2LL * depth);
        outermost.clear();
        EXPECT_EQ(mzLiveCount(mzLiveKindE::hostObject), before);
    }));
}

INSTANTIATE_TEST_SUITE_P(Kinds, DeepCrossings,
                         testing::Values(Nesting{"dispatch_wrapper", inDispatchWrapper,
                                                 greatDepth / 20},
                                         Nesting{"native_array", inNativeArray, greatDepth}),
                         [](auto const& row) { return std::string(row.param.name); });

}  // namespace
