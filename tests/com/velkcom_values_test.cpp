#include <algorithm>

#include <gtest/gtest.h>

#include "com/utf.h"
#include "result_codes.h"
#include "result_text.h"
#include "typed_value.h"

namespace velk::velkcom::test {
namespace {

// Most values print as they are written, so one text shows both directions.
TEST(Values, PrintAsTheyAreWritten) {
    char const* const texts[] = {
        "int:5",
        "int:-2147483648",
        "int64:9223372036854775807",
        "short:-32768",
        "byte:255",
        "double:2.5",
        "double:0.1",
        "double:1e+300",
        "single:0.1",
        "currency:2.5",
        "decimal:12345678901234567890",
        "bool:true",
        "bool:false",
        "date:2024-02-29 13:45:10",
        "date:1899-12-30 00:00:00",
        "string:",
        "string:int:5",
        "string:null",
        "string:\xC3\xA4\xF0\x9F\x98\x80",
        "empty",
        "null",
        "nothing",
    };
    for (auto const* text : texts) EXPECT_EQ(resultText(readValue({text}).get()), text);
}

TEST(Values, AreGuessedFromPlainWords) {
    struct Case {
        char const* written;
        char const* read;
    };
    Case const cases[] = {
        {"5", "int:5"},
        {"-5", "int:-5"},
        {"+5", "int:5"},
        {"2147483648", "int64:2147483648"},
        {"9223372036854775808", "double:9223372036854775808"},
        {"2.5", "double:2.5"},
        {"-.5", "double:-0.5"},
        {"1e3", "double:1000"},
        {"true", "bool:true"},
        {"False", "string:False"},
        {"", "string:"},
        {"-", "string:-"},
        {"inf", "string:inf"},
        {"nan", "string:nan"},
        {"1 2", "string:1 2"},
        {"http://x", "string:http://x"},
        {"C:\\x", "string:C:\\x"},
        {"date:2024-02-29", "date:2024-02-29 00:00:00"},
        {"date:2024-02-29T13:45", "date:2024-02-29 13:45:00"},
        {"missing", "error:DISP_E_PARAMNOTFOUND (0x80020004)"},
        {"error:0x80004005", "error:E_FAIL (0x80004005)"},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(resultText(readValue({entry.written}).get()), entry.read) << entry.written;
    }
    EXPECT_EQ(resultText(readValue({"5", true}).get()), "string:5");
}

TEST(Values, RefuseWhatIsNotOfTheirType) {
    char const* const texts[] = {
        "int:",
        "int:x",
        "int:2147483648",
        "int:1.5",
        "int64:9223372036854775808",
        "short:32768",
        "byte:-1",
        "byte:256",
        "double:",
        "double:x",
        "double:inf",
        "double:1e999",
        "single:",
        "currency:x",
        "currency:1e30",
        "decimal:",
        "bool:yes",
        "bool:TRUE",
        "date:",
        "date:today",
        "date:2023-02-29",
        "date:2024-13-01",
        "date:2024-2-9",
        "date:2024-02-29 24:00",
        "date:2024-02-29 1:00",
        "date:2024-02-29x",
        "error:5",
        "error:0x",
        "error:0x123456789",
    };
    for (auto const* text : texts) EXPECT_THROW(readValue({text}), UsageError) << text;
    EXPECT_THROW(readValue({"string:\xFF"}), UsageError);
}

TEST(Values, OfEveryTypeAreShownWhateverTheyPointTo) {
    // Nothing, room for any value, and an array without data.
    BYTE zeroes[2 * sizeof(VARIANT)]{};
    SAFEARRAY* array = nullptr;
    ASSERT_EQ(SafeArrayAllocDescriptorEx(VT_UI1, 1, &array), S_OK);
    array->rgsabound[0] = {3, 0};
    for (unsigned code = 0; code <= 0xffff; ++code) {
        bool const reference = (code & VT_BYREF) != 0;
        bool const holdsArray = !reference && (code & VT_ARRAY) != 0;
        for (void* const content :
             {static_cast<void*>(nullptr), static_cast<void*>(zeroes), static_cast<void*>(array)}) {
            if (content == zeroes && !reference) continue;
            if (content == array && !holdsArray) continue;
            VARIANT value{};
            value.vt = static_cast<VARTYPE>(code);
            value.byref = content;
            EXPECT_FALSE(resultText(value).empty()) << code;
        }
    }
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(Values, OfTypesThatDoNotExistAreNotFollowed) {
    for (VARTYPE const type : {0xffff, 0x9000 | VT_VARIANT, VT_BYREF | VT_VECTOR | VT_BSTR}) {
        VARIANT value{};
        value.vt = type;
        value.llVal = 8;
        EXPECT_EQ(resultText(value), "value of type " + std::to_string(type));
    }
}

TEST(Values, ArraysOfOtherElementsThanTheySayAreNotRead) {
    struct {
        VARTYPE made;
        VARTYPE said;
        char const* shown;
    } const rows[] = {
        {VT_UI1, VT_VARIANT, "array(0..0):[...]"}, {VT_I8, VT_BSTR, "array(0..0):[...]"},
        {VT_BSTR, VT_I8, "array(0..0):[...]"},     {VT_BSTR, VT_DISPATCH, "array(0..0):[...]"},
        {VT_UI1, VT_EMPTY, "array(0..0):[...]"},   {VT_I4, VT_INT, "array(0..0):[int:-1]"},
        {VT_I8, VT_UI1, "array(0..0):[...]"},
    };
    for (auto const& row : rows) {
        com::SafeArray array(SafeArrayCreateVector(row.made, 0, 1));
        auto* const data = static_cast<BYTE*>(array.get()->pvData);
        ULONG const size = SafeArrayGetElemsize(array.get());
        if (row.made != VT_BSTR) std::fill_n(data, size, BYTE{0xff});
        VARIANT value{};
        value.vt = static_cast<VARTYPE>(VT_ARRAY | row.said);
        value.parray = array.get();
        EXPECT_EQ(resultText(value), row.shown) << row.made << " as " << row.said;
    }
}

TEST(Values, ThatLieInThemselvesAreShownInPart) {
    com::SafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, 100));
    VARIANT value{};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = array.get();
    auto* const elements = static_cast<VARIANT*>(array.get()->pvData);
    for (int i = 0; i < 100; ++i) {
        elements[i].vt = VT_BYREF | VT_ARRAY | VT_VARIANT;
        elements[i].pparray = &value.parray;
    }
    EXPECT_LT(resultText(value).size(), 10'000'000U);
}

TEST(Values, OfManyLevelsAreShownInPart) {
    VARIANT value{};
    for (int level = 0; level < 1000; ++level) {
        SAFEARRAY* const array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        static_cast<VARIANT*>(array->pvData)[0] = value;
        value.vt = VT_ARRAY | VT_VARIANT;
        value.parray = array;
    }
    com::Variant const owned(value);
    std::string const text = resultText(value);
    EXPECT_NE(text.find("[...]"), std::string::npos) << text;
    EXPECT_LT(text.size(), 1000U);
}

TEST(Values, ShowArraysAndReferences) {
    com::SafeArray numbers(SafeArrayCreateVector(VT_I2, -1, 2));
    void* data = nullptr;
    ASSERT_EQ(SafeArrayAccessData(numbers.get(), &data), S_OK);
    static_cast<SHORT*>(data)[0] = 7;
    static_cast<SHORT*>(data)[1] = -8;
    SafeArrayUnaccessData(numbers.get());
    VARIANT value{};
    value.vt = VT_ARRAY | VT_I2;
    value.parray = numbers.get();
    EXPECT_EQ(resultText(value), "array(-1..0):[short:7, short:-8]");

    VARIANT reference{};
    reference.vt = VT_BYREF | VT_VARIANT;
    reference.pvarVal = &value;
    EXPECT_EQ(resultText(reference), "array(-1..0):[short:7, short:-8]");

    com::Bstr const text = com::makeBstr(OLESTR("by reference"));
    BSTR place = text.get();
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &place;
    EXPECT_EQ(resultText(reference), "string:by reference");

    SAFEARRAYBOUND bounds[] = {{2, 0}, {0, 1}};
    com::SafeArray empty(SafeArrayCreate(VT_VARIANT, 2, bounds));
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = empty.get();
    EXPECT_EQ(resultText(value), "array(0..1, 1..0):[]");
    value.parray = nullptr;
    EXPECT_EQ(resultText(value), "array:none");
}

TEST(ResultCodes, HaveSymbolAndNumber) {
    auto const unknown = static_cast<HRESULT>(0x8BADF00DU);
    EXPECT_EQ(describeCode(DISP_E_UNKNOWNNAME), "DISP_E_UNKNOWNNAME (0x80020006)");
    EXPECT_EQ(describeCode(HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND)),
              "ERROR_MOD_NOT_FOUND (0x8007007E)");
    EXPECT_EQ(describeCode(unknown), "0x8BADF00D");
    EXPECT_EQ(meaningOfCode(unknown), "");
}

}  // namespace
}  // namespace velk::velkcom::test
