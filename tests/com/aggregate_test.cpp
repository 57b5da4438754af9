#include "com/aggregate.h"

#include "counting_unknown.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

// An object that has a Recorded as a part of itself and shows its interface
// as its own.
class Outer final : public IUnknown {
  public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) override {
        if (out == nullptr) return E_POINTER;
        if (!IsEqualGUID(id, IID_IUnknown)) return inner->QueryInterface(id, out);
        *out = static_cast<IUnknown*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 1;
    ComPtr<IUnknown> inner;
};

using AggregateTest = ModuleTest;

TEST_F(AggregateTest, PartsShareTheIdentityOfTheOuterObject) {
    Outer outer;
    ASSERT_EQ(createWithOrWithoutOuter<Recorded>(&outer, IID_IUnknown, outer.inner.putVoid()),
              S_OK);
    EXPECT_EQ(outer.references, 1U) << "a part must not hold the whole";
    EXPECT_EQ(module.GetLockCount(), 1);
    {
        auto const part = ComPtr<IUnknown>(&outer).query<IRecorded>(recordedInterface);
        ASSERT_TRUE(part);
        EXPECT_EQ(outer.references, 2U);
        EXPECT_EQ(part->answer(), 42);
        EXPECT_EQ(part->AddRef(), 3U);
        EXPECT_EQ(part->Release(), 2U);
        // Symmetric and transitive: every way leads to the same IUnknown.
        auto const second = part.query<ISecond>(secondInterface);
        ASSERT_TRUE(second);
        EXPECT_EQ(second.query<IUnknown>(IID_IUnknown).get(), &outer);
        EXPECT_EQ(second.query<IRecorded>(recordedInterface), part);
    }
    EXPECT_EQ(outer.references, 1U);
    outer.inner.reset();
    EXPECT_EQ(plan.events.back(), "destroyed");
}

TEST_F(AggregateTest, TheOwnIUnknownAnswersForItself) {
    Outer outer;
    ASSERT_EQ(createWithOrWithoutOuter<Recorded>(&outer, IID_IUnknown, outer.inner.putVoid()),
              S_OK);
    {
        auto const own = outer.inner.query<IUnknown>(IID_IUnknown);
        EXPECT_EQ(own, outer.inner);
        EXPECT_NE(own.get(), static_cast<IUnknown*>(&outer));
        EXPECT_EQ(own->AddRef(), 3U);
        EXPECT_EQ(own->Release(), 2U);
    }
    EXPECT_EQ(outer.inner->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    void* out = &out;
    EXPECT_EQ(outer.inner->QueryInterface(IID_IDispatch, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(outer.references, 1U);
}

TEST_F(AggregateTest, AnOuterObjectGetsIUnknownOnly) {
    CountingUnknown outer;
    void* out = &out;
    EXPECT_EQ(createWithOrWithoutOuter<Recorded>(&outer, recordedInterface, &out),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    out = &out;
    EXPECT_EQ(createWithoutOuter<Recorded>(&outer, IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(outer.references, 0U);
    EXPECT_EQ(outer.queries, 0);
}

TEST_F(AggregateTest, AFailedPartLeavesNothing) {
    CountingUnknown outer;
    plan = {.events = {}, .construction = E_FAIL, .referenceItselfMeanwhile = true};
    void* out = &out;
    EXPECT_EQ(createWithOrWithoutOuter<Recorded>(&outer, IID_IUnknown, &out), E_FAIL);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(plan.events, (Events{"made", "constructed", "released", "destroyed"}));
    EXPECT_EQ(outer.references, 0U);
    EXPECT_EQ(module.GetLockCount(), 0);
}

}  // namespace
}  // namespace velk::com::test
