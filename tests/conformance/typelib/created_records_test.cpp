// Layout of records, unions and aliases made in memory.

#include <gtest/gtest.h>

#include "created_library.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

using CreatedRecord = CreatedTypes;

struct Field {
    VARTYPE type;
    ULONG offset;
};

struct RecordCase {
    OLECHAR const* name;
    TYPEKIND kind;
    WORD packing;
    std::vector<Field> fields;
    ULONG size;
    WORD alignment;
};

TEST_F(CreatedRecord, RecordsAreLaidOutAsCompilersDo) {
    RecordCase const cases[] = {
        {OLESTR("Natural"), TKIND_RECORD, 8, {{VT_I2, 0}, {VT_R8, 8}, {VT_UI1, 16}}, 24, 8},
        {OLESTR("Packed"), TKIND_RECORD, 1, {{VT_I2, 0}, {VT_R8, 2}, {VT_UI1, 10}}, 11, 1},
        {OLESTR("ByTwo"), TKIND_RECORD, 2, {{VT_UI1, 0}, {VT_R8, 2}, {VT_UI1, 10}}, 12, 2},
        {OLESTR("ByFour"), TKIND_RECORD, 4, {{VT_UI1, 0}, {VT_R8, 4}}, 12, 4},
        {OLESTR("Free"), TKIND_RECORD, 0, {{VT_UI1, 0}, {VT_VARIANT, 8}}, 32, 8},
        {OLESTR("Pointers"), TKIND_RECORD, 8, {{VT_I4, 0}, {VT_BSTR, 8}, {VT_I1, 16}}, 24, 8},
        {OLESTR("Small"), TKIND_RECORD, 8, {{VT_I1, 0}, {VT_BOOL, 2}}, 4, 2},
        {OLESTR("Empty"), TKIND_RECORD, 8, {}, 0, 1},
        {OLESTR("Union"), TKIND_UNION, 8, {{VT_I8, 0}, {VT_UI1, 0}}, 8, 8},
        {OLESTR("Odd"), TKIND_UNION, 1, {{VT_I4, 0}, {VT_R8, 0}}, 8, 1},
    };
    for (auto const& entry : cases) {
        auto const type = make(entry.name, entry.kind);
        for (std::size_t i = 0; i < entry.fields.size(); ++i) {
            VARDESC field = variableShape(VAR_PERINSTANCE, entry.fields[i].type);
            ASSERT_EQ(type->AddVarDesc(static_cast<UINT>(i), &field), S_OK);
        }
        EXPECT_EQ(type->SetAlignment(entry.packing), S_OK);
        EXPECT_EQ(type->LayOut(), S_OK);
        auto const reader = readType(type.get());
        expectDifference(System::wine, "records made in memory have no size", [&] {
            auto const attributes = attributesOf(reader.get());
            EXPECT_EQ(attributes->cbSizeInstance, entry.size);
            EXPECT_EQ(attributes->cbAlignment, entry.alignment);
            for (std::size_t i = 0; i < entry.fields.size(); ++i) {
                auto const field = variableOf(reader.get(), static_cast<UINT>(i));
                EXPECT_EQ(field->oInst, entry.fields[i].offset) << i;
            }
        });
    }
}

TEST_F(CreatedRecord, RecordsHoldRecordsAndArrays) {
    auto const inner = make(OLESTR("Inner"), TKIND_RECORD);
    addVariable(inner.get(), variableShape(VAR_PERINSTANCE, VT_I8), OLESTR("a"));
    addVariable(inner.get(), variableShape(VAR_PERINSTANCE, VT_I1), OLESTR("b"));
    auto const alias = make(OLESTR("Alias"), TKIND_ALIAS);
    TYPEDESC target = userDefined(referTo(alias.get(), readType(inner.get()).get()));
    EXPECT_EQ(alias->SetTypeDescAlias(&target), S_OK);
    auto const outer = make(OLESTR("Outer"), TKIND_RECORD);
    struct {
        ARRAYDESC array{};
        SAFEARRAYBOUND second{};
    } grid;
    grid.array.cDims = 2;
    grid.array.tdescElem = plain(VT_I2);
    grid.array.rgbounds[0] = {2, 0};
    (&grid.array.rgbounds[0])[1] = {3, 0};
    VARDESC fields[] = {
        variableShape(VAR_PERINSTANCE, VT_I1), variableShape(VAR_PERINSTANCE, VT_USERDEFINED),
        variableShape(VAR_PERINSTANCE, VT_CARRAY), variableShape(VAR_PERINSTANCE, VT_I4)};
    fields[1].elemdescVar.tdesc.hreftype = referTo(outer.get(), readType(alias.get()).get());
    fields[2].elemdescVar.tdesc.lpadesc = &grid.array;
    for (UINT i = 0; i < 4; ++i) ASSERT_EQ(outer->AddVarDesc(i, &fields[i]), S_OK);
    EXPECT_EQ(outer->LayOut(), S_OK);
    auto const reader = readType(outer.get());
    auto const kept = variableOf(reader.get(), 2);
    ASSERT_EQ(kept->elemdescVar.tdesc.vt, VT_CARRAY);
    EXPECT_EQ(kept->elemdescVar.tdesc.lpadesc->cDims, 2);
    EXPECT_EQ((&kept->elemdescVar.tdesc.lpadesc->rgbounds[0])[1].cElements, 3u);
    expectDifference(System::wine, "records made in memory have no size", [&] {
        ULONG const offsets[] = {0, 8, 24, 36};
        for (UINT i = 0; i < 4; ++i) EXPECT_EQ(variableOf(reader.get(), i)->oInst, offsets[i]);
        EXPECT_EQ(attributesOf(reader.get())->cbSizeInstance, 40u);
    });
}

TEST_F(CreatedRecord, RecordsOfOtherLibrariesHaveTheirSize) {
    auto const shapes = loadShapes();
    auto const record = make(OLESTR("Outer"), TKIND_RECORD);
    VARDESC fields[] = {variableShape(VAR_PERINSTANCE, VT_I1),
                        variableShape(VAR_PERINSTANCE, VT_USERDEFINED)};
    fields[1].elemdescVar.tdesc.hreftype =
        referTo(record.get(), typeNamed(shapes.get(), OLESTR("Point")).get());
    for (UINT i = 0; i < 2; ++i) ASSERT_EQ(record->AddVarDesc(i, &fields[i]), S_OK);
    EXPECT_EQ(record->LayOut(), S_OK);
    expectDifference(System::wine, "records made in memory have no size", [&] {
        EXPECT_EQ(attributesOf(readType(record.get()).get())->cbSizeInstance, 72u);
    });
}

TEST_F(CreatedRecord, RecordsCanBeFilledThroughTheirInformation) {
    auto const record = make(OLESTR("Pair"), TKIND_RECORD);
    EXPECT_EQ(record->SetGuid(shapesId(0xA0)), S_OK);
    addVariable(record.get(), variableShape(VAR_PERINSTANCE, VT_I2), OLESTR("small"));
    addVariable(record.get(), variableShape(VAR_PERINSTANCE, VT_I4), OLESTR("large"));
    EXPECT_EQ(record->LayOut(), S_OK);
    expectDifference(System::wine, "records made in memory have no size", [&] {
        IRecordInfo* raw = nullptr;
        ASSERT_EQ(GetRecordInfoFromTypeInfo(readType(record.get()).get(), &raw), S_OK);
        Owned<IRecordInfo> const info(raw);
        ULONG size = 0;
        ASSERT_EQ(info->GetSize(&size), S_OK);
        ASSERT_EQ(size, 8u);
        struct {
            SHORT small = 3;
            LONG large = 0;
        } pair;
        VARIANT value = number(70000);
        EXPECT_EQ(info->PutField(INVOKE_PROPERTYPUT, &pair, OLESTR("large"), &value), S_OK);
        EXPECT_EQ(pair.small, 3);
        EXPECT_EQ(pair.large, 70000);
    });
}

TEST_F(CreatedRecord, RecordsWithoutEndAreRefused) {
    auto const record = make(OLESTR("Self"), TKIND_RECORD);
    VARDESC field = variableShape(VAR_PERINSTANCE, VT_USERDEFINED);
    field.elemdescVar.tdesc.hreftype = referTo(record.get(), readType(record.get()).get());
    ASSERT_EQ(record->AddVarDesc(0, &field), S_OK);
    auto const huge = make(OLESTR("Huge"), TKIND_RECORD);
    ARRAYDESC array{};
    array.cDims = 1;
    array.tdescElem = plain(VT_R8);
    array.rgbounds[0] = {0xffffffff, 0};
    field.elemdescVar.tdesc.vt = VT_CARRAY;
    field.elemdescVar.tdesc.lpadesc = &array;
    ASSERT_EQ(huge->AddVarDesc(0, &field), S_OK);
    expectDifference(System::wine, "records made in memory have no size", [&] {
        EXPECT_EQ(record->LayOut(), TYPE_E_CIRCULARTYPE);
        EXPECT_EQ(huge->LayOut(), TYPE_E_SIZETOOBIG);
    });
    expectDifference(System::wine, "any alignment is taken",
                     [&] { EXPECT_EQ(huge->SetAlignment(3), E_INVALIDARG); });
}

TEST_F(CreatedRecord, AliasTakesTheSizeOfItsTarget) {
    auto const alias = make(OLESTR("Alias"), TKIND_ALIAS);
    auto const reader = readType(alias.get());
    TYPEDESC inner = plain(VT_R4);
    TYPEDESC target = plain(VT_PTR);
    target.lptdesc = &inner;
    struct {
        TYPEDESC target;
        ULONG size;
    } const cases[] = {{target, 8}, {plain(VT_I2), 2}, {plain(VT_R8), 8}};
    for (auto entry : cases) {
        EXPECT_EQ(alias->SetTypeDescAlias(&entry.target), S_OK);
        EXPECT_EQ(alias->LayOut(), S_OK);
        auto const attributes = attributesOf(reader.get());
        EXPECT_EQ(attributes->cbSizeInstance, entry.size);
        EXPECT_EQ(attributes->tdescAlias.vt, entry.target.vt);
    }
    EXPECT_EQ(alias->SetTypeDescAlias(nullptr), E_INVALIDARG);
    EXPECT_EQ(make(OLESTR("Enum"), TKIND_ENUM)->SetTypeDescAlias(&inner), TYPE_E_BADMODULEKIND);
    EXPECT_EQ(make(OLESTR("Enum2"), TKIND_ENUM)->SetTypeDescAlias(nullptr), E_INVALIDARG);
}

TEST_F(CreatedRecord, ForgetsItsLayoutWhenInvalidated) {
    auto const type = make(OLESTR("Record"), TKIND_RECORD);
    for (auto* const name : {OLESTR("a"), OLESTR("b")}) {
        addVariable(type.get(), variableShape(VAR_PERINSTANCE, VT_I4), name);
    }
    EXPECT_EQ(type->LayOut(), S_OK);
    expectDifference(System::wine, "layouts cannot be invalidated", [&] {
        EXPECT_EQ(type->Invalidate(), S_OK);
        EXPECT_EQ(attributesOf(readType(type.get()).get())->cbSizeInstance, 0u);
        EXPECT_EQ(type->LayOut(), S_OK);
        EXPECT_EQ(attributesOf(readType(type.get()).get())->cbSizeInstance, 8u);
        EXPECT_EQ(variableOf(readType(type.get()).get(), 1)->oInst, 4u);
    });
}

}  // namespace
}  // namespace velk::test
