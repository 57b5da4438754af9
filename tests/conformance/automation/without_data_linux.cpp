// Elements of arrays whose data has gone. Other systems hand out addresses near
// null, or stop the process.
#include <gtest/gtest.h>

#include "fake_objects.h"

namespace velk::test {
namespace {

class WithoutData : public ::testing::TestWithParam<VARTYPE> {
  protected:
    void SetUp() override {
        ASSERT_EQ(SafeArrayAllocDescriptorEx(GetParam(), 2, &array_), S_OK);
        array_->rgsabound[0] = {3, 0};
        array_->rgsabound[1] = {2, -1};
    }
    void TearDown() override { EXPECT_EQ(SafeArrayDestroy(array_), S_OK); }

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
}

TEST_P(WithoutData, GrowsWithZeroes) {
    SAFEARRAYBOUND longer{4, 0};
    ASSERT_EQ(SafeArrayRedim(array_, &longer), S_OK);
    LONG indices[] = {-1, 3};
    void* element = nullptr;
    ASSERT_EQ(SafeArrayPtrOfIndex(array_, indices, &element), S_OK);
    EXPECT_EQ(*static_cast<BYTE*>(element), 0);
}

INSTANTIATE_TEST_SUITE_P(Types, WithoutData,
                         ::testing::Values(VT_I4, VT_UI1, VT_R8, VT_DECIMAL, VT_BSTR, VT_VARIANT,
                                           VT_UNKNOWN, VT_DISPATCH));

}  // namespace
}  // namespace velk::test
