// Fields that are fixed arrays, which callers see as SAFEARRAYs.

#include <gtest/gtest.h>

#include "support/value_notation.h"
#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

class FixedArrays : public testing::Test {
  protected:
    Record<Grid> grid{OLESTR("Grid")};

    HRESULT get(OLECHAR const* name, VARIANT* value) {
        return grid.info->GetField(grid.get(), name, value);
    }
    HRESULT put(OLECHAR const* name, VARIANT* value) {
        return grid.info->PutField(INVOKE_PROPERTYPUTREF, grid.get(), name, value);
    }
};

TEST_F(FixedArrays, AreReadWithTheirIndices) {
    for (SHORT row = 0; row < 4; ++row) {
        for (SHORT column = 0; column < 2; ++column) {
            grid->cells[row][column] = static_cast<SHORT>(10 * row + column);
        }
    }
    expectDifference(System::wine, "fixed arrays cannot be read", [&] {
        Value cells("BSTR:old");
        ASSERT_EQ(get(OLESTR("cells"), &cells), S_OK);
        ASSERT_EQ(cells->vt, VT_ARRAY | VT_I2);
        ASSERT_EQ(SafeArrayGetDim(cells->parray), 2u);
        LONG upper[2] = {};
        EXPECT_EQ(SafeArrayGetUBound(cells->parray, 1, &upper[0]), S_OK);
        EXPECT_EQ(SafeArrayGetUBound(cells->parray, 2, &upper[1]), S_OK);
        EXPECT_EQ(upper[0], 3);
        EXPECT_EQ(upper[1], 1);
        for (LONG row = 0; row < 4; ++row) {
            for (LONG column = 0; column < 2; ++column) {
                LONG indices[] = {row, column};
                SHORT cell = -1;
                EXPECT_EQ(SafeArrayGetElement(cells->parray, indices, &cell), S_OK);
                EXPECT_EQ(cell, 10 * row + column);
            }
        }
    });
}

TEST_F(FixedArrays, GiveCopiesOfWhatTheyOwn) {
    grid->labels[1] = newText(OLESTR("label"));
    grid->people[1] = {newText(OLESTR("Bob")), 8};
    expectDifference(System::wine, "fixed arrays cannot be read", [&] {
        Value labels;
        ASSERT_EQ(get(OLESTR("labels"), &labels), S_OK);
        ASSERT_EQ(labels->vt, VT_ARRAY | VT_BSTR);
        BSTR const copy = static_cast<BSTR*>(labels->parray->pvData)[1];
        EXPECT_EQ(textIn(copy), "label");
        EXPECT_NE(copy, grid->labels[1]);
        Value people;
        ASSERT_EQ(get(OLESTR("people"), &people), S_OK);
        ASSERT_EQ(people->vt, VT_ARRAY | VT_RECORD);
        auto const& person = static_cast<Person*>(people->parray->pvData)[1];
        EXPECT_EQ(textIn(person.name), "Bob");
        EXPECT_NE(person.name, grid->people[1].name);
    });
}

TEST_F(FixedArrays, AreReplacedElementByElement) {
    SAFEARRAYBOUND bounds[] = {{4, 1}, {2, -1}};
    Value cells;
    cells->vt = VT_ARRAY | VT_I2;
    cells->parray = SafeArrayCreate(VT_I2, 2, bounds);
    LONG indices[] = {3, 0};
    SHORT number = 31;
    ASSERT_EQ(SafeArrayPutElement(cells->parray, indices, &number), S_OK);
    Value labels;
    labels->vt = VT_ARRAY | VT_BSTR;
    labels->parray = SafeArrayCreateVector(VT_BSTR, 0, 3);
    static_cast<BSTR*>(labels->parray->pvData)[2] = newText(OLESTR("new"));
    grid->labels[0] = newText(OLESTR("old"));
    Value people;
    people->vt = VT_ARRAY | VT_RECORD;
    people->parray = peopleOf({40, 41});
    VARIANT reference{};
    reference.vt = VT_BYREF | VT_ARRAY | VT_RECORD;
    reference.pparray = &people->parray;
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(put(OLESTR("cells"), &cells), S_OK);
        EXPECT_EQ(grid->cells[2][1], 31);
        EXPECT_EQ(grid->cells[1][1], 0);
        EXPECT_EQ(put(OLESTR("labels"), &labels), S_OK);
        EXPECT_EQ(grid->labels[0], nullptr);
        EXPECT_EQ(textIn(grid->labels[2]), "new");
        EXPECT_EQ(put(OLESTR("people"), &reference), S_OK);
        EXPECT_EQ(grid->people[1].age, 41);
        EXPECT_EQ(textIn(grid->people[0].name), "a");
    });
}

TEST_F(FixedArrays, TakeArraysOfTheirShapeOnly) {
    auto const vector = [](VARTYPE type, ULONG elements) {
        auto value = std::make_unique<Value>();
        (*value)->vt = VT_ARRAY | type;
        (*value)->parray = SafeArrayCreateVector(type, 0, elements);
        return value;
    };
    expectDifference(System::wine, "fields cannot be put", [&] {
        EXPECT_EQ(put(OLESTR("labels"), &**vector(VT_BSTR, 2)), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put(OLESTR("labels"), &**vector(VT_BSTR, 4)), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put(OLESTR("labels"), &**vector(VT_I4, 3)), DISP_E_TYPEMISMATCH);
        EXPECT_EQ(put(OLESTR("cells"), &**vector(VT_I2, 8)), DISP_E_TYPEMISMATCH);
        Value text("BSTR:x");
        EXPECT_EQ(put(OLESTR("labels"), &text), DISP_E_TYPEMISMATCH);
        Value nothing;
        nothing->vt = VT_ARRAY | VT_BSTR;
        EXPECT_EQ(put(OLESTR("labels"), &nothing), DISP_E_TYPEMISMATCH);
    });
}

TEST_F(FixedArrays, AreReferredToByTheirFirstElement) {
    expectDifference(System::wine, "fixed arrays cannot be read", [&] {
        Value value;
        PVOID array = nullptr;
        ASSERT_EQ(grid.info->GetFieldNoCopy(grid.get(), OLESTR("labels"), &value, &array), S_OK);
        EXPECT_EQ(value->vt, VT_BYREF | VT_BSTR);
        EXPECT_EQ(value->byref, grid->labels);
        EXPECT_EQ(array, grid->labels);
    });
}

}  // namespace
}  // namespace velk::test
