// Values and texts: what they own, how they are copied and given up, and what
// conversion does beyond plain values.
#include <cstring>

#include <gtest/gtest.h>

#include "support/expected_difference.h"
#include "support/fake_objects.h"
#include "support/value_notation.h"

namespace velk::test {
namespace {

// The length in bytes stands before the first character; after the last byte
// there are two that are zero, and a text of zero bytes is not null.
TEST(Bstr, HasItsLengthBeforeAndZeroesBehind) {
    for (UINT const length : {0U, 1U, 2U, 3U, 6U, 255U}) {
        std::string bytes(length, 'x');
        if (length > 3) bytes[2] = bytes[3] = 0;
        for (char const* const source : {bytes.c_str(), static_cast<char const*>(nullptr)}) {
            BSTR const text = SysAllocStringByteLen(source, length);
            ASSERT_NE(text, nullptr);
            auto const* const start = reinterpret_cast<char const*>(text);
            DWORD before = 0;
            std::memcpy(&before, start - sizeof before, sizeof before);
            EXPECT_EQ(before, length);
            EXPECT_EQ(SysStringByteLen(text), length);
            EXPECT_EQ(SysStringLen(text), length / 2);
            if (source) {
                EXPECT_EQ(std::string(start, length + 2), bytes + std::string(2, '\0'));
            }
            SysFreeString(text);
        }
    }
    OLECHAR const letters[] = {'a', 'b', 'c', 0};
    for (BSTR const text : {SysAllocString(letters), SysAllocStringLen(letters, 3)}) {
        EXPECT_EQ(SysStringByteLen(text), 6U);
        EXPECT_EQ(std::memcmp(text, letters, sizeof letters), 0);
        SysFreeString(text);
    }
}

TEST(Bstr, MayBeNullAndIsNeverTooLong) {
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    SysFreeString(nullptr);
    for (UINT const length : {0x7fffffffU, 0x80000000U, 0xfffffffeU, 0xffffffffU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr) << length;
    }
    EXPECT_EQ(SysAllocStringByteLen(nullptr, 0xffffffffU), nullptr);
}

VARIANT objectValue(FakeDispatch& object, VARTYPE type = VT_DISPATCH) {
    VARIANT value{};
    value.vt = type;
    value.pdispVal = &object;
    return value;
}

VARIANT referenceTo(VARTYPE type, void* place) {
    VARIANT value{};
    value.vt = static_cast<VARTYPE>(VT_BYREF | type);
    value.byref = place;
    return value;
}

// What a VARIANT can own, each with references to one object.
VARIANT(*const owners[])
(FakeDispatch&) = {[](FakeDispatch& object) { return objectValue(object); },
                   [](FakeDispatch& object) { return objectValue(object, VT_UNKNOWN); },
                   [](FakeDispatch& object) {
                       VARIANT array = objectValue(object, VT_ARRAY | VT_DISPATCH);
                       array.parray = SafeArrayCreateVector(VT_DISPATCH, 0, 2);
                       *static_cast<IDispatch**>(array.parray->pvData) = &object;
                       return array;
                   },
                   [](FakeDispatch& object) {
                       VARIANT array = objectValue(object, VT_ARRAY | VT_VARIANT);
                       array.parray = SafeArrayCreateVector(VT_VARIANT, 0, 2);
                       *static_cast<VARIANT*>(array.parray->pvData) = objectValue(object);
                       return array;
                   }};

TEST(Variant, OwnsWhatItHoldsAndNothingBehindReferences) {
    for (auto const& make : owners) {
        FakeDispatch object;
        object.AddRef();
        VARIANT value = make(object);
        VARTYPE const type = value.vt;
        {
            Value copy("BSTR:old");
            EXPECT_EQ(VariantCopy(&copy, &value), S_OK) << type;
            EXPECT_EQ(object.references, 3U) << type;
            EXPECT_EQ(VariantCopy(&copy, &copy), S_OK);
            EXPECT_EQ(object.references, 3U) << type;
            EXPECT_EQ(copy.notation(), notationOf(value));
            Value converted;
            EXPECT_EQ(VariantChangeType(&converted, &value, 0, type), S_OK);
            EXPECT_EQ(object.references, 4U) << type;
        }
        VARIANT reference = referenceTo(type, &value.pdispVal);
        VARIANT shallow{};
        EXPECT_EQ(VariantCopy(&shallow, &reference), S_OK);
        EXPECT_EQ(shallow.byref, reference.byref);
        EXPECT_EQ(object.references, 2U) << type;
        EXPECT_EQ(VariantClear(&shallow), S_OK);
        EXPECT_EQ(VariantCopyInd(&shallow, &reference), S_OK);
        EXPECT_EQ(object.references, 3U) << type;
        EXPECT_EQ(VariantClear(&shallow), S_OK);
        EXPECT_EQ(VariantClear(&reference), S_OK);
        EXPECT_EQ(object.references, 2U) << type;
        EXPECT_EQ(VariantClear(&value), S_OK);
        EXPECT_EQ(value.vt, VT_EMPTY);
        EXPECT_EQ(object.references, 1U) << type;
    }
}

TEST(Variant, RefusesTypesThatNoneCarries) {
    for (int const bad :
         {15, 24, 25, 37, VT_BYREF | VT_EMPTY, +VT_ARRAY, +VT_VECTOR, VT_VECTOR | VT_I4,
          VT_RESERVED | VT_I4, +VT_LPWSTR, VT_ARRAY | VT_NULL, VT_BYREF | 15}) {
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(bad);
        EXPECT_EQ(VariantClear(&value), DISP_E_BADVARTYPE) << bad;
        EXPECT_EQ(value.vt, bad);
        Value copy("I4:7");
        EXPECT_EQ(VariantCopy(&copy, &value), DISP_E_BADVARTYPE) << bad;
        EXPECT_EQ(copy.notation(), "I4:7");
    }
}

TEST(Variant, ReferencesOfEveryTypeAreFollowed) {
    for (char const* const notation :
         {"I1:-1", "UI1:255", "I2:-300", "UI2:65535", "I4:-70000", "UI4:4000000000",
          "I8:-5000000000", "UI8:18446744073709551615", "INT:-1", "UINT:1", "R4:1.5", "R8:-2.5",
          "CY:1.2345", "DATE:2.25", "BOOL:-1", "ERROR:80020004", "DECIMAL:-1.50", "BSTR:text"}) {
        Value value(notation);
        bool const whole = value->vt == VT_DECIMAL;
        VARIANT reference =
            referenceTo(value->vt, whole ? static_cast<void*>(&value->decVal) : &value->llVal);
        VARIANT outer = referenceTo(VT_VARIANT, &reference);
        for (VARIANT* const source : {&reference, &outer}) {
            Value copy;
            EXPECT_EQ(VariantCopyInd(&copy, source), S_OK) << notation;
            EXPECT_EQ(copy.notation(), notation);
            Value same;
            EXPECT_EQ(VariantChangeType(&same, source, 0, value->vt), S_OK) << notation;
            EXPECT_EQ(same.notation(), notation);
        }
        // A reference to a reference to a VARIANT is malformed.
        VARIANT outermost = referenceTo(VT_VARIANT, &outer);
        Value kept("I4:1");
        VARIANT none{};
        EXPECT_EQ(VariantCopyInd(&none, &outermost), E_INVALIDARG);
        EXPECT_EQ(VariantChangeType(&kept, &outermost, 0, VT_I2), E_INVALIDARG);
        // Nothing is converted to a reference, not even the same one.
        EXPECT_EQ(VariantChangeType(
                      &kept, &reference, 0,
                      reference.vt == (VT_BYREF | VT_I4) ? VT_BYREF | VT_I2 : VT_BYREF | VT_I4),
                  DISP_E_TYPEMISMATCH);
        VARIANT null = referenceTo(value->vt, nullptr);
        EXPECT_EQ(VariantChangeType(&kept, &null, 0, VT_I2), DISP_E_TYPEMISMATCH) << notation;
        EXPECT_EQ(kept.notation(), "I4:1");
        // In place: the reference turns into what it points at.
        EXPECT_EQ(VariantCopyInd(&reference, &reference), S_OK);
        EXPECT_EQ(notationOf(reference), notation);
        VariantClear(&reference);
    }
}

TEST(ChangeType, InPlaceAndKeepsTheDestinationWhenItFails) {
    struct {
        char const* from;
        VARTYPE type;
        char const* to;
    } const rows[] = {{"BSTR:12", VT_I4, "I4:12"},           {"I4:12", VT_DECIMAL, "DECIMAL:12"},
                      {"DECIMAL:12", VT_BSTR, "BSTR:12"},    {"BSTR:12", VT_BSTR, "BSTR:12"},
                      {"BSTR:no number", VT_I4, "mismatch"}, {"R8:1e+300", VT_CY, "overflow"}};
    for (auto const& row : rows) {
        Value value(row.from);
        Value other("BSTR:kept");
        for (bool const same : {false, true}) {
            VARIANT* const target = same ? &value : &other;
            HRESULT const result = VariantChangeType(target, &value, 0, row.type);
            EXPECT_EQ(result == S_OK ? notationOf(*target) : resultName(result), row.to);
            if (result == S_OK) continue;
            EXPECT_EQ(notationOf(*target), same ? row.from : "BSTR:kept");
        }
    }
}

TEST(ChangeType, ObjectsGiveTheirDefaultValue) {
    FakeDispatch inner;
    inner.defaultValue = [](VARIANT* value) {
        Value text("BSTR:12.5");
        return VariantCopy(value, &text);
    };
    FakeDispatch outer;
    outer.defaultValue = [&inner](VARIANT* value) {
        VARIANT object = objectValue(inner);
        return VariantCopy(value, &object);
    };
    for (FakeDispatch* const object : {&inner, &outer}) {
        VARIANT source = objectValue(*object);
        Value result;
        EXPECT_EQ(VariantChangeTypeEx(&result, &source, 0x407, 0, VT_BSTR), S_OK);
        EXPECT_EQ(result.notation(), "BSTR:12.5");
        EXPECT_EQ(object->lastLcid, 0x407U);
        EXPECT_EQ(object->lastFlags, DISPATCH_PROPERTYGET);
        EXPECT_EQ(VariantChangeType(&result, &source, VARIANT_NOVALUEPROP, VT_I4),
                  DISP_E_TYPEMISMATCH);
        EXPECT_EQ(object->calls, 1);
        object->calls = 0;
    }
    VARIANT source = objectValue(inner);
    inner.defaultValue = [](VARIANT*) { return DISP_E_EXCEPTION; };
    Value kept("I4:12");
    EXPECT_EQ(VariantChangeType(&kept, &source, 0, VT_I4), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(kept.notation(), "I4:12");
    EXPECT_EQ(inner.references + outer.references, 2U);
}

TEST(ChangeType, ObjectsTurnIntoTheirInterfaces) {
    FakeDispatch object;
    VARIANT source = objectValue(object, VT_UNKNOWN);
    {
        Value result;
        EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_DISPATCH), S_OK);
        EXPECT_EQ(result->pdispVal, &object);
        EXPECT_EQ(object.references, 2U);
    }
    Value result;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_I4), DISP_E_TYPEMISMATCH);
    object.answersDispatch = false;
    EXPECT_EQ(VariantChangeType(&result, &source, 0, VT_DISPATCH), E_NOINTERFACE);
    EXPECT_EQ(object.references, 1U);
}

TEST(ChangeType, ArraysKeepTheirTypeOrBecomeText) {
    Value source;
    source->vt = VT_ARRAY | VT_UI1;
    source->parray = SafeArrayCreateVector(VT_UI1, 0, 4);
    std::memcpy(source->parray->pvData, "a\0b", 4);
    Value text;
    EXPECT_EQ(VariantChangeType(&text, &source, 0, VT_BSTR), S_OK);
    EXPECT_EQ(text.notation(), "BSTR:ab");
    Value bytes;
    EXPECT_EQ(VariantChangeType(&bytes, &text, 0, VT_ARRAY | VT_UI1), S_OK);
    EXPECT_EQ(bytes.notation(), source.notation());
    EXPECT_NE(bytes->parray, source->parray);
    for (int const type : {+VT_EMPTY, +VT_I4, +VT_VARIANT, +VT_DISPATCH, VT_ARRAY | VT_I4}) {
        EXPECT_EQ(VariantChangeType(&bytes, &source, 0, static_cast<VARTYPE>(type)),
                  DISP_E_TYPEMISMATCH)
            << type;
    }
}

TEST(Variant, ALockedArrayIsNeitherClearedNorOverwritten) {
    HRESULT(*const actions[])
    (VARIANT*, VARIANT*) = {
        [](VARIANT* value, VARIANT*) { return VariantClear(value); },
        [](VARIANT* value, VARIANT* number) { return VariantCopy(value, number); },
        [](VARIANT* value, VARIANT* number) { return VariantChangeType(value, number, 0, VT_R8); }};
    for (auto const& action : actions) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_I4, 0, 2);
        ASSERT_EQ(SafeArrayLock(array), S_OK);
        VARIANT value{};
        value.vt = VT_ARRAY | VT_I4;
        value.parray = array;
        Value number("I4:1");
        EXPECT_EQ(action(&value, &number), DISP_E_ARRAYISLOCKED);
        expectDifference("locked-array", [&] { EXPECT_EQ(value.vt, VT_ARRAY | VT_I4); });
        EXPECT_EQ(SafeArrayUnlock(array), S_OK);
        EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    }
}

}  // namespace
}  // namespace velk::test
