// Numbers from texts and as texts.
#include <gtest/gtest.h>

#include "support/expected_difference.h"
#include "table.h"
#include "value_notation.h"

namespace velk::test {
namespace {

struct Language {
    char const* name;
    LCID id;
};
constexpr Language languages[] = {
    {"us", 0x409}, {"de", 0x407}, {"gb", 0x809}, {"fr", 0x40c}, {"invariant", 0x7f}};

std::string contentOf(std::string const& notation) {
    std::size_t const colon = notation.find(':');
    return colon == std::string::npos ? notation : notation.substr(colon + 1);
}

// text | I2 | I4 | UI1 | R8 | CY | DECIMAL | BOOL, in US English
constexpr std::string_view numbers = R"(
1                      | 1 | 1 | 1 | 1 | 1 | 1 | -1
+1                     | 1 | 1 | 1 | 1 | 1 | 1 | -1
-1                     | -1 | -1 | ^ | -1 | -1 | -1 | -1
1-                     | -1 | -1 | ^ | -1 | -1 | -1 | -1
1+                     | 1 | 1 | 1 | 1 | 1 | 1 | -1
-1-                    | . | . | . | . | . | . | .
(1)                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
((1))                  | . | . | . | . | . | . | .
(-1)                   | -1 | -1 | ^ | -1 | -1 | -1 | -1
-(1)                   | -1 | -1 | ^ | -1 | -1 | -1 | -1
( 1 )                  | -1 | -1 | ^ | -1 | -1 | -1 | -1
(1                     | . | . | . | . | . | . | .
1)                     | . | . | . | . | . | . | .
1 2                    | . | . | . | . | . | . | .
1.                     | 1 | 1 | 1 | 1 | 1 | 1 | -1
.5                     | 0 | 0 | 0 | 0.5 | 0.5 | 0.5 | -1
-.5                    | 0 | 0 | 0 | -0.5 | -0.5 | -0.5 | -1
.                      | . | . | . | . | . | . | .
-                      | . | . | . | . | . | . | .
+                      | . | . | . | . | . | . | .
- 1                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
+ 1                    | 1 | 1 | 1 | 1 | 1 | 1 | -1
1 -                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
1.5.5                  | . | . | . | . | . | . | .
1,5                    | 15 | 15 | 15 | 15 | 15 | 15 | -1
1,50                   | 150 | 150 | 150 | 150 | 150 | 150 | -1
1,,5                   | 15 | 15 | 15 | 15 | 15 | 15 | -1
,5                     | . | . | . | . | . | . | .
12,34,56               | ^ | 123456 | ^ | 123456 | 123456 | 123456 | -1
1,234.5                | 1234 | 1234 | ^ | 1234.5 | 1234.5 | 1234.5 | -1
1,234,567.89           | ^ | 1234568 | ^ | 1234567.89 | 1234567.89 | 1234567.89 | -1
$1                     | 1 | 1 | 1 | 1 | 1 | 1 | -1
$ 1                    | 1 | 1 | 1 | 1 | 1 | 1 | -1
-$1                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
$-1                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
1$                     | 1 | 1 | 1 | 1 | 1 | 1 | -1
1 $                    | 1 | 1 | 1 | 1 | 1 | 1 | -1
($1)                   | -1 | -1 | ^ | -1 | -1 | -1 | -1
$(1)                   | -1 | -1 | ^ | -1 | -1 | -1 | -1
$$1                    | . | . | . | . | . | . | .
$1-                    | -1 | -1 | ^ | -1 | -1 | -1 | -1
€1                     | . | . | . | . | . | . | .
1e5                    | ^ | 100000 | ^ | 1e+05 | 100000 | 100000 | -1
1E5                    | ^ | 100000 | ^ | 1e+05 | 100000 | 100000 | -1
1e+5                   | ^ | 100000 | ^ | 1e+05 | 100000 | 100000 | -1
1e-5                   | 0 | 0 | 0 | 1e-05 | 0 | 0.00001 | -1
1e                     | . | . | . | . | . | . | .
1e+                    | . | . | . | . | . | . | .
1e5.5                  | . | . | . | . | . | . | .
1 e5                   | . | . | . | . | . | . | .
1d5                    | . | . | . | . | . | . | .
1E5E5                  | . | . | . | . | . | . | .
e5                     | . | . | . | . | . | . | .
1e0005                 | ^ | 100000 | ^ | 1e+05 | 100000 | 100000 | -1
# The nearest double; Wine multiplies by powers of ten and collects their errors.
1e308                  | ^ | ^ | ^ | ~1e+308 | ^ | ^ | -1
1e309                  | ^ | ^ | ^ | ^ | ^ | ^ | ^
-1e309                 | ^ | ^ | ^ | ^ | ^ | ^ | ^
# A scale beyond 28 does not exist.
1e-400                 | 0 | 0 | 0 | 0 | 0 | ~0 | 0
0e500                  | 0 | 0 | 0 | 0 | 0 | 0 | 0
1e38                   | ^ | ^ | ^ | 1e+38 | ^ | ^ | -1
4e38                   | ^ | ^ | ^ | 4e+38 | ^ | ^ | -1
0x10                   | . | . | . | . | . | . | .
1%                     | . | . | . | . | . | . | .
1f                     | . | . | . | . | . | . | .
a1                     | . | . | . | . | . | . | .
INF                    | . | . | . | . | . | . | .
NAN                    | . | . | . | . | . | . | .
00001                  | 1 | 1 | 1 | 1 | 1 | 1 | -1
0.00001                | 0 | 0 | 0 | 1e-05 | 0 | 0.00001 | -1
0000000000000000000000000001 | 1 | 1 | 1 | 1 | 1 | 1 | -1
123456789012345678901234567890 | ^ | ^ | ^ | ~1.2345678901234568e+29 | ^ | ^ | -1
79228162514264337593543950335 | ^ | ^ | ^ | ~7.922816251426434e+28 | ^ | 79228162514264337593543950335 | -1
79228162514264337593543950336 | ^ | ^ | ^ | ~7.922816251426434e+28 | ^ | ^ | -1
79228162514264337593543950335.4 | ^ | ^ | ^ | ~7.922816251426434e+28 | ^ | ~79228162514264337593543950335 | -1
79228162514264337593543950335.5 | ^ | ^ | ^ | ~7.922816251426434e+28 | ^ | ^ | -1
7.9228162514264337593543950335 | 8 | 8 | 8 | ~7.9228162514264335 | 7.9228 | 7.9228162514264337593543950335 | -1
0.00000000000000000000000000015 | 0 | 0 | 0 | 1.5e-28 | 0 | ~0.0000000000000000000000000002 | -1
0.00000000000000000000000000025 | 0 | 0 | 0 | 2.5e-28 | 0 | ~0.0000000000000000000000000002 | -1
1.00000000000000000000000000005 | 1 | 1 | 1 | 1 | 1 | ~1 | -1
# The greatest and the smallest currency are in range.
922337203685477.5807   | ^ | ^ | ^ | ~922337203685477.6 | ~922337203685477.5807 | 922337203685477.5807 | -1
922337203685477.5808   | ^ | ^ | ^ | ~922337203685477.6 | ^ | 922337203685477.5808 | -1
-922337203685477.5808  | ^ | ^ | ^ | ~-922337203685477.6 | ~-922337203685477.5808 | -922337203685477.5808 | -1
# Halves of a ten-thousandth go to the even neighbour.
0.00005                | 0 | 0 | 0 | 5e-05 | ~0 | 0.00005 | -1
0.00015                | 0 | 0 | 0 | 0.00015 | ~0.0002 | 0.00015 | -1
0.00025                | 0 | 0 | 0 | 0.00025 | ~0.0002 | 0.00025 | -1
1.23456789             | 1 | 1 | 1 | 1.23456789 | 1.2346 | 1.23456789 | -1
0.1                    | 0 | 0 | 0 | 0.1 | 0.1 | 0.1 | -1
123456.789             | ^ | 123457 | ^ | 123456.789 | 123456.789 | 123456.789 | -1
2147483647.4           | ^ | 2147483647 | ^ | 2147483647.4 | 2147483647.4 | 2147483647.4 | -1
2147483647.5           | ^ | ^ | ^ | 2147483647.5 | 2147483647.5 | 2147483647.5 | -1
-2147483648.5          | ^ | -2147483648 | ^ | -2147483648.5 | -2147483648.5 | -2147483648.5 | -1
9223372036854775807    | ^ | ^ | ^ | ~9223372036854775808 | ^ | 9223372036854775807 | -1
18446744073709551615   | ^ | ^ | ^ | 18446744073709551616 | ^ | 18446744073709551615 | -1
0.5                    | 0 | 0 | 0 | 0.5 | 0.5 | 0.5 | -1
1.5                    | 2 | 2 | 2 | 1.5 | 1.5 | 1.5 | -1
2.5                    | 2 | 2 | 2 | 2.5 | 2.5 | 2.5 | -1
-0.5                   | 0 | 0 | 0 | -0.5 | -0.5 | -0.5 | -1
-0.51                  | -1 | -1 | ^ | -0.51 | -0.51 | -0.51 | -1
3.4028235e38           | ^ | ^ | ^ | 3.4028235e+38 | ^ | ^ | -1
3.4028236e38           | ^ | ^ | ^ | 3.4028236e+38 | ^ | ^ | -1
1.7976931348623157e308 | ^ | ^ | ^ | ~1.7976931348623157e+308 | ^ | ^ | ~-1
1.7976931348623159e308 | ^ | ^ | ^ | ^ | ^ | ^ | ^
-0                     | 0 | 0 | 0 | -0 | 0 | 0 | 0
0                      | 0 | 0 | 0 | 0 | 0 | 0 | 0
True                   | . | . | . | . | . | . | -1
'1'                    | . | . | . | . | . | . | .
1;                     | . | . | . | . | . | . | .
)";

// text | I2 | I4 | UI1 | I8 | UI8 | DECIMAL
constexpr std::string_view bits = R"(
&H1                 | 1 | 1 | 1 | 1 | 1 | 1
&h1f                | 31 | 31 | 31 | 31 | 31 | 31
&HG                 | . | . | . | . | . | .
&H                  | . | . | . | . | . | .
&H1g                | . | . | . | . | . | .
&H 1                | . | . | . | . | . | .
&HFF                | 255 | 255 | 255 | 255 | 255 | 255
&HFFFF              | -1 | 65535 | ^ | 65535 | 65535 | 65535
&HFFFFFFFF          | ^ | -1 | ^ | 4294967295 | 4294967295 | 4294967295
&H80000000          | ^ | -2147483648 | ^ | 2147483648 | 2147483648 | 2147483648
&H7FFFFFFF          | ^ | 2147483647 | ^ | 2147483647 | 2147483647 | 2147483647
&H100000000         | ^ | ^ | ^ | 4294967296 | 4294967296 | 4294967296
# All 64 bits; Wine stops one digit earlier.
&HFFFFFFFFFFFFFFFF  | ^ | ^ | ^ | ~-1 | ~18446744073709551615 | ~18446744073709551615
&HFFFFFFFFFFFFFFFFF | ^ | ^ | ^ | ^ | ^ | ^
&O7                 | 7 | 7 | 7 | 7 | 7 | 7
&o17                | 15 | 15 | 15 | 15 | 15 | 15
&O8                 | . | . | . | . | . | .
&17                 | . | . | . | . | . | .
-&H1                | 1 | 1 | 1 | 1 | 1 | 1
&H-1                | . | . | . | . | . | .
)";

// text | us | de | gb | fr | invariant, as R8
constexpr std::string_view localNumbers = R"(
1.5     | 1.5 | 15 | 1.5 | . | 1.5
1,5     | 15 | 1.5 | 15 | 1.5 | 15
1.234,5 | 1.2345 | 1234.5 | 1.2345 | . | 1.2345
1,234.5 | 1234.5 | 1.2345 | 1234.5 | . | 1234.5
1 234,5 | . | . | . | 1234.5 | .
1 234   | . | . | . | 1234 | .
1 234   | . | . | . | ~1234 | .
€1      | . | 1 | . | 1 | .
1 €     | . | 1 | . | 1 | .
$1      | 1 | . | . | . | .
£1      | . | . | 1 | . | .
-£1     | . | . | -1 | . | .
¤ 1     | . | . | . | . | 1
1e5     | 1e+05 | 1e+05 | 1e+05 | 1e+05 | 1e+05
(1,5)   | -15 | -1.5 | -15 | -1.5 | -15
1.5.5   | . | 155 | . | . | .
.5      | 0.5 | . | 0.5 | . | 0.5
,5      | . | 0.5 | . | 0.5 | .
)";

// value | us | de | gb | fr | invariant
constexpr std::string_view numberTexts = R"(
R8:1234567.891          | 1234567.891 | 1234567,891 | 1234567.891 | 1234567,891 | 1234567.891
R8:-0.5                 | -0.5 | -0,5 | -0.5 | -0,5 | -0.5
R8:1e30                 | 1E+30 | 1E+30 | 1E+30 | 1E+30 | 1E+30
R8:0                    | 0 | 0 | 0 | 0 | 0
R8:-0                   | 0 | 0 | 0 | 0 | 0
R8:100                  | 100 | 100 | 100 | 100 | 100
R8:0.1                  | 0.1 | 0,1 | 0.1 | 0,1 | 0.1
R8:0.0001               | 0.0001 | 0,0001 | 0.0001 | 0,0001 | 0.0001
R8:0.00001              | 1E-05 | 1E-05 | 1E-05 | 1E-05 | 1E-05
# The decimal separator is the locale's in scientific notation too.
R8:0.00001234           | 1.234E-05 | ~1,234E-05 | 1.234E-05 | ~1,234E-05 | 1.234E-05
R8:1e-15                | 1E-15 | 1E-15 | 1E-15 | 1E-15 | 1E-15
R8:123456789012345      | 123456789012345 | 123456789012345 | 123456789012345 | 123456789012345 | 123456789012345
R8:1e15                 | 1E+15 | 1E+15 | 1E+15 | 1E+15 | 1E+15
R8:1234567890123456     | 1.23456789012346E+15 | ~1,23456789012346E+15 | 1.23456789012346E+15 | ~1,23456789012346E+15 | 1.23456789012346E+15
R8:99999999999999.95    | 100000000000000 | 100000000000000 | 100000000000000 | 100000000000000 | 100000000000000
R8:999999999999999.9    | 1E+15 | 1E+15 | 1E+15 | 1E+15 | 1E+15
R8:0.333333333333333333 | 0.333333333333333 | 0,333333333333333 | 0.333333333333333 | 0,333333333333333 | 0.333333333333333
R8:1.23456789012345678  | 1.23456789012346 | 1,23456789012346 | 1.23456789012346 | 1,23456789012346 | 1.23456789012346
R8:5e-324               | 4.94065645841247E-324 | ~4,94065645841247E-324 | 4.94065645841247E-324 | ~4,94065645841247E-324 | 4.94065645841247E-324
R8:1.7976931348623157e308 | 1.79769313486232E+308 | ~1,79769313486232E+308 | 1.79769313486232E+308 | ~1,79769313486232E+308 | 1.79769313486232E+308
# Under Wine infinities and NaN are called as C99 calls them.
R8:inf                  | ~1.#INF | ~1.#INF | ~1.#INF | ~1.#INF | ~1.#INF
R8:-inf                 | ~-1.#INF | ~-1.#INF | ~-1.#INF | ~-1.#INF | ~-1.#INF
# What is no number fits no integer; Wine gives whatever its comparison lets through.
R8:nan                  | ~1.#QNAN | ~1.#QNAN | ~1.#QNAN | ~1.#QNAN | ~1.#QNAN
R4:1.5                  | 1.5 | 1,5 | 1.5 | 1,5 | 1.5
R4:0.1                  | 0.1 | 0,1 | 0.1 | 0,1 | 0.1
R4:1234567.8            | 1234568 | 1234568 | 1234568 | 1234568 | 1234568
R4:9999999              | 9999999 | 9999999 | 9999999 | 9999999 | 9999999
R4:1e7                  | 1E+07 | 1E+07 | 1E+07 | 1E+07 | 1E+07
R4:12345678             | 1.234568E+07 | ~1,234568E+07 | 1.234568E+07 | ~1,234568E+07 | 1.234568E+07
R4:0.0001               | 0.0001 | 0,0001 | 0.0001 | 0,0001 | 0.0001
R4:0.00001              | 1E-05 | 1E-05 | 1E-05 | 1E-05 | 1E-05
R4:3.4028235e38         | 3.402823E+38 | ~3,402823E+38 | 3.402823E+38 | ~3,402823E+38 | 3.402823E+38
CY:1234.5678            | 1234.5678 | 1234,5678 | 1234.5678 | 1234,5678 | 1234.5678
CY:-0.5                 | -0.5 | -0,5 | -0.5 | -0,5 | -0.5
CY:0.01                 | 0.01 | 0,01 | 0.01 | 0,01 | 0.01
CY:100                  | 100 | 100 | 100 | 100 | 100
CY:-922337203685477.5808 | -922337203685477.5808 | -922337203685477,5808 | -922337203685477.5808 | -922337203685477,5808 | -922337203685477.5808
DECIMAL:-12345.67       | -12345.67 | -12345,67 | -12345.67 | -12345,67 | -12345.67
DECIMAL:1.500           | 1.5 | 1,5 | 1.5 | 1,5 | 1.5
DECIMAL:0.0000000000000000000000000001 | 0.0000000000000000000000000001 | 0,0000000000000000000000000001 | 0.0000000000000000000000000001 | 0,0000000000000000000000000001 | 0.0000000000000000000000000001
DECIMAL:-79228162514264337593543950335 | -79228162514264337593543950335 | -79228162514264337593543950335 | -79228162514264337593543950335 | -79228162514264337593543950335 | -79228162514264337593543950335
DECIMAL:-0.0            | 0 | 0 | 0 | 0 | 0
I4:-5                   | -5 | -5 | -5 | -5 | -5
UI8:18446744073709551615 | 18446744073709551615 | 18446744073709551615 | 18446744073709551615 | 18446744073709551615 | 18446744073709551615
I8:-9223372036854775808 | -9223372036854775808 | -9223372036854775808 | -9223372036854775808 | -9223372036854775808 | -9223372036854775808
)";

template <std::size_t Count>
void checkTypes(std::string_view table, char const* const (&types)[Count]) {
    forEachRow(table, [&](Row const& row) {
        ASSERT_EQ(row.size(), Count + 1) << row[0];
        for (std::size_t column = 0; column < Count; ++column) {
            expectCell(row[column + 1], contentOf(changed("BSTR:" + row[0], types[column])),
                       '"' + row[0] + "\" to " + types[column]);
        }
    });
}

void checkLanguages(std::string_view table, std::string const& prefix, char const* type) {
    forEachRow(table, [&](Row const& row) {
        ASSERT_EQ(row.size(), std::size(languages) + 1) << row[0];
        for (std::size_t column = 0; column < std::size(languages); ++column) {
            expectCell(row[column + 1],
                       contentOf(changed(prefix + row[0], type, languages[column].id)),
                       row[0] + " to " + type + " in " + languages[column].name);
        }
    });
}

TEST(NumberText, NumbersFromTexts) {
    checkTypes(numbers, {"I2", "I4", "UI1", "R8", "CY", "DECIMAL", "BOOL"});
}

TEST(NumberText, BitsFromTexts) {
    checkTypes(bits, {"I2", "I4", "UI1", "I8", "UI8", "DECIMAL"});
}

TEST(NumberText, NumbersFromTextsOfOtherLanguages) {
    checkLanguages(localNumbers, "BSTR:", "R8");
}

TEST(NumberText, TextsFromNumbers) {
    checkLanguages(numberTexts, "", "BSTR");
}

TEST(NumberText, BlanksAroundANumberDoNotCount) {
    for (char const* const text : {" 12", "12 ", "  12  ", "\t12", "12\t", "12\n", " - 12 "}) {
        std::string const result = changed(std::string("BSTR:") + text, "I4");
        EXPECT_TRUE(result == "I4:12" || result == "I4:-12") << text;
    }
    for (char const* const text : {"", " ", "\t"}) {
        EXPECT_EQ(changed(std::string("BSTR:") + text, "I4"), "mismatch") << '"' << text << '"';
    }
}

TEST(NumberText, ANullTextIsNoNumber) {
    for (VARTYPE const type : {VT_I4, VT_R8, VT_CY, VT_DECIMAL, VT_BOOL, VT_DATE}) {
        VARIANT text;
        VariantInit(&text);
        text.vt = VT_BSTR;
        text.bstrVal = nullptr;
        Value result;
        EXPECT_EQ(VariantChangeType(&result, &text, 0, type), DISP_E_TYPEMISMATCH) << type;
    }
}

// An LCID that no table has behaves as US English, and so do the defaults.
TEST(NumberText, DefaultsAreUsEnglish) {
    for (LCID const lcid : {LCID{LOCALE_USER_DEFAULT}, LCID{LOCALE_SYSTEM_DEFAULT}, LCID{0}}) {
        EXPECT_EQ(changed("R8:1.5", "BSTR", lcid), "BSTR:1.5") << lcid;
        EXPECT_EQ(changed("BSTR:1,234.5", "R8", lcid), "R8:1234.5") << lcid;
        EXPECT_EQ(changed("DATE:36526.75", "BSTR", lcid), "BSTR:1/1/2000 6:00:00 PM") << lcid;
    }
}

TEST(NumberText, LongTextsOfDigitsAreRead) {
    std::string const zeroes(2000, '0');
    EXPECT_EQ(changed("BSTR:" + zeroes + "7", "I4"), "I4:7");
    EXPECT_EQ(changed("BSTR:1" + zeroes, "R8"), "overflow");
    expectDifference(System::wine, "an exponent beyond 32 bits wraps",
                     [] { EXPECT_EQ(changed("BSTR:1e999999999999999", "R8"), "overflow"); });
    EXPECT_EQ(changed("BSTR:0." + zeroes + "1", "R8"), "R8:0");
    EXPECT_EQ(changed("BSTR:1" + zeroes, "I8"), "overflow");
}

TEST(NumberText, TheFunctionsOfOneTypeAgree) {
    auto text = wide("-1.5");
    LONG whole = 0;
    EXPECT_EQ(VarI4FromStr(text.data(), 0x409, 0, &whole), S_OK);
    EXPECT_EQ(whole, -2);
    double real = 0;
    EXPECT_EQ(VarR8FromStr(text.data(), 0x409, 0, &real), S_OK);
    EXPECT_EQ(real, -1.5);
    CY currency{};
    EXPECT_EQ(VarCyFromStr(text.data(), 0x409, 0, &currency), S_OK);
    EXPECT_EQ(currency.int64, -15000);
    DECIMAL decimal{};
    EXPECT_EQ(VarDecFromStr(text.data(), 0x409, 0, &decimal), S_OK);
    EXPECT_EQ(decimal.Lo64, 15U);
    EXPECT_EQ(decimal.scale, 1);
    EXPECT_EQ(decimal.sign, DECIMAL_NEG);
    VARIANT_BOOL truth = 0;
    EXPECT_EQ(VarBoolFromStr(text.data(), 0x409, 0, &truth), S_OK);
    EXPECT_EQ(truth, VARIANT_TRUE);
    BSTR made = nullptr;
    EXPECT_EQ(VarBstrFromR8(-1.5, 0x407, 0, &made), S_OK);
    EXPECT_EQ(narrow(made, SysStringLen(made)), "-1,5");
    SysFreeString(made);
    EXPECT_EQ(VarBstrFromDec(&decimal, 0x409, 0, &made), S_OK);
    EXPECT_EQ(narrow(made, SysStringLen(made)), "-1.5");
    SysFreeString(made);
    EXPECT_EQ(VarBstrFromCy(currency, 0x409, 0, &made), S_OK);
    EXPECT_EQ(narrow(made, SysStringLen(made)), "-1.5");
    SysFreeString(made);
    EXPECT_EQ(VarBstrFromI4(-15, 0x409, 0, &made), S_OK);
    EXPECT_EQ(narrow(made, SysStringLen(made)), "-15");
    SysFreeString(made);
}

}  // namespace
}  // namespace velk::test
