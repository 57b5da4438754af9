#include "com/owners.h"

#include <gtest/gtest.h>

#include "com/error.h"
#include "counting_unknown.h"

namespace velk::com::test {
namespace {

TEST(ComPtr, CountsEveryCopyOnce) {
    CountingUnknown object;
    {
        ComPtr<IUnknown> shared(&object);
        EXPECT_EQ(object.references, 1U);
        ComPtr<IUnknown> copy = shared;
        EXPECT_EQ(object.references, 2U);
        ComPtr<IUnknown> moved = std::move(copy);
        EXPECT_EQ(object.references, 2U);
        EXPECT_FALSE(copy);
        moved = moved;
        EXPECT_EQ(object.references, 2U);
        moved = nullptr;
        EXPECT_EQ(object.references, 1U);
    }
    EXPECT_EQ(object.references, 0U);
}

TEST(ComPtr, AdoptsAndGivesUpWithoutCounting) {
    CountingUnknown object;
    object.references = 1;
    ComPtr<IUnknown> pointer(&object, adopt);
    EXPECT_EQ(object.references, 1U);
    EXPECT_EQ(pointer.copy(), &object);
    EXPECT_EQ(object.references, 2U);
    object.references = 1;
    EXPECT_EQ(pointer.detach(), &object);
    EXPECT_EQ(object.references, 1U);
    EXPECT_EQ(pointer.get(), nullptr);
}

TEST(ComPtr, PutReleasesWhatItHeld) {
    CountingUnknown object;
    ComPtr<IUnknown> pointer(&object);
    EXPECT_EQ(*pointer.put(), nullptr);
    EXPECT_EQ(object.references, 0U);
}

TEST(ComPtr, QueriesOtherInterfaces) {
    CountingUnknown object;
    ComPtr<IUnknown> pointer(&object);
    HRESULT code = E_FAIL;
    auto same = pointer.query<IUnknown>(IID_IUnknown, &code);
    EXPECT_EQ(code, S_OK);
    EXPECT_EQ(object.references, 2U);
    EXPECT_FALSE(pointer.query<IDispatch>(IID_IDispatch, &code));
    EXPECT_EQ(code, E_NOINTERFACE);
    EXPECT_EQ(object.references, 2U);
    EXPECT_FALSE(ComPtr<IUnknown>().query<IUnknown>(IID_IUnknown, &code));
    EXPECT_EQ(code, E_POINTER);
}

TEST(Owners, BstrKeepsNulsAndLengths) {
    static constexpr OLECHAR raw[] = {'a', 0, 'b'};
    Bstr const text = makeBstr(TextView(raw, 3));
    EXPECT_EQ(SysStringLen(text.get()), 3U);
    EXPECT_EQ(viewBstr(text), TextView(raw, 3));
    Bstr const empty = makeBstr({});
    ASSERT_NE(empty.get(), nullptr);
    EXPECT_TRUE(viewBstr(empty).empty());
    EXPECT_TRUE(viewBstr(BSTR{}).empty());
}

TEST(Owners, TextTooLongForABstrIsNoMemory) {
    static constexpr OLECHAR one = 'x';
    // Never read: the length alone is refused.
    TextView const absurd(&one, (std::size_t{1} << 31) + 1);
    try {
        makeBstr(absurd);
        FAIL() << "no error";
    } catch (Error const& error) {
        EXPECT_EQ(error.code(), E_OUTOFMEMORY);
    }
}

TEST(Owners, VariantOwnsAReferenceOfItsObject) {
    CountingUnknown object;
    {
        Variant value;
        value.address()->vt = VT_UNKNOWN;
        value.address()->punkVal = &object;
        object.AddRef();
        Variant const copy = copyVariant(value.get());
        EXPECT_EQ(object.references, 2U);
        Variant moved = std::move(value);
        EXPECT_EQ(object.references, 2U);
        EXPECT_EQ(value.get().vt, VT_EMPTY);
        EXPECT_EQ(moved.put()->vt, VT_EMPTY);
        EXPECT_EQ(object.references, 1U);
    }
    EXPECT_EQ(object.references, 0U);
}

TEST(Owners, ExceptionInfoAndArraysGiveTheirMemoryBack) {
    ExceptionInfo info;
    info.address()->bstrSource = SysAllocString(OLESTR("source"));
    info.address()->bstrDescription = SysAllocString(OLESTR("description"));
    info.address()->bstrHelpFile = SysAllocString(OLESTR("help"));
    ExceptionInfo const moved = std::move(info);
    EXPECT_EQ(viewBstr(moved.get().bstrHelpFile), OLESTR("help"));
    EXPECT_EQ(info.get().bstrSource, nullptr);
    SafeArray array(SafeArrayCreateVector(VT_BSTR, 0, 3));
    ASSERT_NE(array.get(), nullptr);
    TaskMemory block(CoTaskMemAlloc(16));
    ASSERT_NE(block.get(), nullptr);
    block = TaskMemory(CoTaskMemAlloc(32));
    EXPECT_NE(block.get(), nullptr);
    // What is left alive here fails the run at its end.
}

}  // namespace
}  // namespace velk::com::test
