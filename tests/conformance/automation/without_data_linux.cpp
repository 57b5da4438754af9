// Arrays whose data has gone, or has never come: bounds without elements behind
// them; and arrays in memory of others. Other systems hand out addresses near
// null, or stop the process.
#include <gtest/gtest.h>

#include "support/fake_objects.h"
#include "support/value_notation.h"

namespace velk::test {
namespace {

class WithoutData : public ::testing::TestWithParam<VARTYPE> {
  protected:
    void SetUp() override {
        ASSERT_EQ(SafeArrayAllocDescriptorEx(GetParam(), 2, &holder_->parray), S_OK);
        holder_->vt = static_cast<VARTYPE>(VT_ARRAY | GetParam());
        array_ = holder_->parray;
        array_->rgsabound[0] = {3, 0};
        array_->rgsabound[1] = {2, -1};
    }

    Value holder_;
    SAFEARRAY* array_ = nullptr;
};

TEST_P(WithoutData, HasNoElements) {
    struct {
        LONG indices[2];
        HRESULT expected;
    } const rows[] = {{{-1, 0}, E_INVALIDARG},
                      {{0, 2}, E_INVALIDARG},
                      {{1, 0}, DISP_E_BADINDEX},
                      {{0, 3}, DISP_E_BADINDEX}};
    FakeDispatch object;
    VARIANT storage{};
    bool const pointer = GetParam() == VT_UNKNOWN || GetParam() == VT_DISPATCH;
    for (auto row : rows) {
        void* element = &storage;
        EXPECT_EQ(SafeArrayPtrOfIndex(array_, row.indices, &element), row.expected);
        EXPECT_EQ(SafeArrayGetElement(array_, row.indices, &storage), row.expected);
        void* const value = pointer ? static_cast<void*>(&object) : &storage;
        EXPECT_EQ(SafeArrayPutElement(array_, row.indices, GetParam() == VT_BSTR ? nullptr : value),
                  row.expected);
        EXPECT_EQ(array_->cLocks, 0U);
    }
    EXPECT_EQ(object.references, 1U);
    void* data = array_;
    EXPECT_EQ(SafeArrayAccessData(array_, &data), S_OK);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(SafeArrayUnaccessData(array_), S_OK);
}

// In its copy, and when it grows.
TEST_P(WithoutData, GetsZeroes) {
    Value copy;
    ASSERT_EQ(VariantCopy(&copy, &holder_), S_OK);
    SAFEARRAYBOUND shorter{1, 0};
    EXPECT_EQ(SafeArrayRedim(array_, &shorter), S_OK);
    SAFEARRAYBOUND longer{3, 0};
    ASSERT_EQ(SafeArrayRedim(array_, &longer), S_OK);
    EXPECT_EQ(copy.notation(), holder_.notation());
    auto const* const bytes = static_cast<BYTE const*>(array_->pvData);
    for (ULONG index = 0; index < 6 * array_->cbElements; ++index) EXPECT_EQ(bytes[index], 0);
}

TEST(BytesWithoutData, AreZeroesAsText) {
    Value value;
    value->vt = VT_ARRAY | VT_UI1;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UI1, 1, &value->parray), S_OK);
    value->parray->rgsabound[0] = {3, 0};
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(value->bstrVal), 3), std::string(3, '\0'));
    EXPECT_EQ(SysStringByteLen(value->bstrVal), 3U);
}

// Whoever made the memory of an array frees it: here the elements are only given up.
TEST(ForeignMemory, IsNotFreed) {
    FakeDispatch object;
    SAFEARRAY* copy = nullptr;
    IUnknown* elements[2] = {&object, nullptr};
    object.AddRef();
    SAFEARRAY array{};
    array.cDims = 1;
    array.cbElements = sizeof(IUnknown*);
    array.fFeatures = FADF_AUTO | FADF_UNKNOWN;
    array.rgsabound[0] = {2, 0};
    array.pvData = elements;
    ASSERT_EQ(SafeArrayCopy(&array, &copy), S_OK);
    EXPECT_EQ(object.references, 3U);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    SAFEARRAYBOUND longer{3, 0};
    EXPECT_EQ(SafeArrayRedim(&array, &longer), E_INVALIDARG);
    EXPECT_EQ(SafeArrayDestroy(&array), S_OK);
    EXPECT_EQ(object.references, 1U);
    EXPECT_EQ(elements[0], nullptr);
}

INSTANTIATE_TEST_SUITE_P(Types, WithoutData,
                         ::testing::Values(VT_I4, VT_UI1, VT_R8, VT_DECIMAL, VT_BSTR, VT_VARIANT,
                                           VT_UNKNOWN, VT_DISPATCH));

}  // namespace
}  // namespace velk::test
