// Arrays: shape, features, locks.
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "value_notation.h"

namespace velk::test {
namespace {

TEST(SafeArray, FeaturesAndSizesByType) {
    constexpr struct {
        VARTYPE type;
        USHORT features;
        ULONG size;
    } rows[] = {{VT_I1, FADF_HAVEVARTYPE, 1},
                {VT_UI2, FADF_HAVEVARTYPE, 2},
                {VT_BOOL, FADF_HAVEVARTYPE, 2},
                {VT_I4, FADF_HAVEVARTYPE, 4},
                {VT_ERROR, FADF_HAVEVARTYPE, 4},
                {VT_R8, FADF_HAVEVARTYPE, 8},
                {VT_CY, FADF_HAVEVARTYPE, 8},
                {VT_DECIMAL, FADF_HAVEVARTYPE, 16},
                {VT_BSTR, FADF_HAVEVARTYPE | FADF_BSTR, 8},
                {VT_VARIANT, FADF_HAVEVARTYPE | FADF_VARIANT, 24},
                {VT_UNKNOWN, FADF_HAVEIID | FADF_UNKNOWN, 8},
                {VT_DISPATCH, FADF_HAVEIID | FADF_DISPATCH, 8}};
    for (auto const& row : rows) {
        SAFEARRAYBOUND bound{2, 0};
        SAFEARRAY* const array = SafeArrayCreate(row.type, 1, &bound);
        ASSERT_NE(array, nullptr) << row.type;
        EXPECT_EQ(array->fFeatures, row.features) << row.type;
        EXPECT_EQ(SafeArrayGetElemsize(array), row.size) << row.type;
        VARTYPE type = 0;
        EXPECT_EQ(SafeArrayGetVartype(array, &type), S_OK);
        EXPECT_EQ(type, row.type);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

TEST(SafeArray, TypesWithoutArrays) {
    for (VARTYPE const type : {VARTYPE{VT_EMPTY}, VARTYPE{VT_NULL}, VARTYPE{15}, VARTYPE{VT_VOID},
                               VARTYPE{VT_RECORD}, VARTYPE{VT_FILETIME}}) {
        SAFEARRAYBOUND bound{2, 0};
        EXPECT_EQ(SafeArrayCreate(type, 1, &bound), nullptr) << type;
        EXPECT_EQ(SafeArrayCreateVector(type, 0, 2), nullptr) << type;
    }
}

TEST(SafeArray, NullIsRefusedOrNothing) {
    SAFEARRAY* copy = nullptr;
    LONG bound = 0;
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayDestroyDescriptor(nullptr), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(0, &copy), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAllocDescriptor(65536, &copy), E_INVALIDARG);
}

TEST(SafeArray, LocksAreCountedAndHoldTheArray) {
    SAFEARRAYBOUND bound{3, 1};
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, 1, &bound);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(array->cLocks, 2U);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyDescriptor(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    array->cLocks = 0xffff;
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    EXPECT_EQ(array->cLocks, 0xffffU);
    array->cLocks = 0;
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

// The first index varies fastest; the descriptor lists the last dimension first.
TEST(SafeArray, ElementsOfSeveralDimensions) {
    SAFEARRAYBOUND bounds[] = {{2, 1}, {3, -1}, {4, 10}};
    SAFEARRAY* const array = SafeArrayCreate(VT_I4, 3, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->rgsabound[0].cElements, 4U);
    EXPECT_EQ(array->rgsabound[2].lLbound, 1);
    LONG number = 0;
    for (LONG third = 10; third < 14; ++third) {
        for (LONG second = -1; second < 2; ++second) {
            for (LONG first = 1; first < 3; ++first, ++number) {
                LONG indices[] = {first, second, third};
                ASSERT_EQ(SafeArrayPutElement(array, indices, &number), S_OK);
            }
        }
    }
    for (LONG index = 0; index < number; ++index) {
        EXPECT_EQ(static_cast<LONG*>(array->pvData)[index], index);
    }
    LONG outside[] = {1, 2, 10};
    void* element = nullptr;
    EXPECT_EQ(SafeArrayPtrOfIndex(array, outside, &element), DISP_E_BADINDEX);
    LONG below[] = {0, 0, 10};
    EXPECT_EQ(SafeArrayGetElement(array, below, &number), DISP_E_BADINDEX);
    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 4, &bound), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &bound), S_OK);
    EXPECT_EQ(bound, 1);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, AnEmptyArrayHasDataAndNoElement) {
    SAFEARRAYBOUND none{0, 0};
    SAFEARRAY* const array = SafeArrayCreate(VT_BSTR, 1, &none);
    ASSERT_NE(array, nullptr);
    EXPECT_NE(array->pvData, nullptr);
    LONG index = 0;
    BSTR text = nullptr;
    EXPECT_EQ(SafeArrayGetElement(array, &index, &text), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, CopyDataNeedsTheSameCounts) {
    SAFEARRAY* const source = SafeArrayCreateVector(VT_I4, 0, 3);
    SAFEARRAY* const shifted = SafeArrayCreateVector(VT_I4, 5, 3);
    SAFEARRAY* const longer = SafeArrayCreateVector(VT_I4, 0, 4);
    static_cast<LONG*>(source->pvData)[2] = 7;
    EXPECT_EQ(SafeArrayCopyData(source, shifted), S_OK);
    EXPECT_EQ(static_cast<LONG*>(shifted->pvData)[2], 7);
    EXPECT_EQ(SafeArrayCopyData(source, longer), E_INVALIDARG);
    for (SAFEARRAY* const array : {source, shifted, longer}) {
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

// An array whose data has gone, or has never come: bounds without elements behind them.
TEST(SafeArray, WithoutDataIsCopiedAsZeroes) {
    for (VARTYPE const type : {VT_I4, VT_BSTR, VT_VARIANT, VT_UNKNOWN, VT_UI1}) {
        SAFEARRAY* array = nullptr;
        ASSERT_EQ(SafeArrayAllocDescriptorEx(type, 1, &array), S_OK);
        array->rgsabound[0] = {3, 0};
        void* data = array;
        EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);

        SAFEARRAY* copy = nullptr;
        ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK) << type;
        ASSERT_NE(copy->pvData, nullptr) << type;
        BYTE const zeroes[3 * sizeof(VARIANT)]{};
        EXPECT_EQ(std::memcmp(copy->pvData, zeroes, std::size_t{3} * copy->cbElements), 0) << type;
        EXPECT_EQ(SafeArrayCopyData(array, copy), S_OK) << type;
        EXPECT_EQ(SafeArrayCopyData(copy, array), E_INVALIDARG) << type;
        EXPECT_EQ(SafeArrayDestroy(copy), S_OK);

        VARIANT value;
        VariantInit(&value);
        value.vt = static_cast<VARTYPE>(VT_ARRAY | type);
        value.parray = array;
        VARIANT other;
        VariantInit(&other);
        EXPECT_EQ(VariantCopy(&other, &value), S_OK) << type;
        EXPECT_EQ(VariantClear(&other), S_OK) << type;
        SAFEARRAYBOUND shorter{1, 0};
        EXPECT_EQ(SafeArrayRedim(array, &shorter), S_OK) << type;
        EXPECT_EQ(SafeArrayDestroyData(array), S_OK) << type;
        EXPECT_EQ(VariantClear(&value), S_OK) << type;
    }
}

TEST(SafeArray, BytesWithoutDataAreZeroesAsText) {
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UI1, 1, &array), S_OK);
    array->rgsabound[0] = {3, 0};
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_UI1;
    value.parray = array;
    ASSERT_EQ(VariantChangeType(&value, &value, 0, VT_BSTR), S_OK);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(value.bstrVal), SysStringByteLen(value.bstrVal)),
              std::string(3, '\0'));
    VariantClear(&value);
}

}  // namespace
}  // namespace velk::test
