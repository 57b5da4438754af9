// Truth values from texts and as texts.
#include <gtest/gtest.h>

#include "table.h"
#include "value_notation.h"

namespace velk::test {
namespace {

LCID lcidOf(std::string const& language) {
    if (language == "de") return 0x407;
    if (language == "fr") return 0x40c;
    return language == "gb" ? 0x809 : 0x409;
}

std::string contentOf(std::string const& notation) {
    std::size_t const colon = notation.find(':');
    return colon == std::string::npos ? notation : notation.substr(colon + 1);
}

// value | language | no flag | VARIANT_ALPHABOOL | VARIANT_LOCALBOOL | both
constexpr std::string_view texts = R"(
BOOL:-1 | us | -1 | True | True | True
BOOL:-1 | de | -1 | True | Wahr | Wahr
BOOL:-1 | gb | -1 | True | True | True
BOOL:-1 | fr | -1 | True | Vrai | Vrai
BOOL:0 | us  | 0 | False | False | False
BOOL:0 | de  | 0 | False | Falsch | Falsch
BOOL:0 | gb  | 0 | False | False | False
BOOL:0 | fr  | 0 | False | Faux | Faux
BOOL:1 | us  | 1 | True | True | True
BOOL:1 | de  | 1 | True | Wahr | Wahr
BOOL:1 | gb  | 1 | True | True | True
BOOL:1 | fr  | 1 | True | Vrai | Vrai
BOOL:2 | us  | 2 | True | True | True
BOOL:2 | de  | 2 | True | Wahr | Wahr
BOOL:2 | gb  | 2 | True | True | True
BOOL:2 | fr  | 2 | True | Vrai | Vrai
)";

// text | us | us local | de | de local | fr local
constexpr std::string_view words = R"(
True    | -1 | -1 | -1 | -1 | -1
false   | 0 | 0 | 0 | 0 | 0
TRUE    | -1 | -1 | -1 | -1 | -1
#TRUE#  | -1 | -1 | -1 | -1 | -1
#FALSE# | 0 | 0 | 0 | 0 | 0
#true#  | . | . | . | . | .
Wahr    | . | . | . | -1 | .
falsch  | . | . | . | 0 | .
Vrai    | . | . | . | . | -1
faux    | . | . | . | . | 0
yes     | . | . | . | . | .
T       | . | . | . | . | .
1       | -1 | -1 | -1 | -1 | -1
0       | 0 | 0 | 0 | 0 | 0
2.5     | -1 | -1 | -1 | -1 | .
-0      | 0 | 0 | 0 | 0 | 0
)";

TEST(TruthText, TextsFromTruthValues) {
    constexpr USHORT flags[] = {0, VARIANT_ALPHABOOL, VARIANT_LOCALBOOL,
                                VARIANT_ALPHABOOL | VARIANT_LOCALBOOL};
    forEachRow(texts, [&](Row const& row) {
        ASSERT_EQ(row.size(), std::size(flags) + 2) << row[0];
        for (std::size_t column = 0; column < std::size(flags); ++column) {
            expectCell(row[column + 2],
                       contentOf(changed(row[0], "BSTR", lcidOf(row[1]), flags[column])),
                       row[0] + " in " + row[1]);
        }
    });
}

TEST(TruthText, TruthValuesFromTexts) {
    struct Column {
        char const* language;
        USHORT flags;
    };
    constexpr Column columns[] = {{"us", 0},
                                  {"us", VARIANT_LOCALBOOL},
                                  {"de", 0},
                                  {"de", VARIANT_LOCALBOOL},
                                  {"fr", VARIANT_LOCALBOOL}};
    forEachRow(words, [&](Row const& row) {
        ASSERT_EQ(row.size(), std::size(columns) + 1) << row[0];
        for (std::size_t index = 0; index < std::size(columns); ++index) {
            auto const& column = columns[index];
            expectCell(
                row[index + 1],
                contentOf(changed("BSTR:" + row[0], "BOOL", lcidOf(column.language), column.flags)),
                row[0] + " in " + column.language);
        }
    });
}

}  // namespace
}  // namespace velk::test
