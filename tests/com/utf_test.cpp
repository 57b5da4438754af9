#include "com/utf.h"

#include <gtest/gtest.h>

namespace velk::com::test {
namespace {

using Text = std::basic_string<OLECHAR>;

TEST(Utf, GoesBothWays) {
    struct Case {
        char const* utf8;
        Text utf16;
    };
    Case const cases[] = {
        {"", OLESTR("")},
        {"plain", OLESTR("plain")},
        {"\xC3\xA4\xE2\x82\xAC", {0x00E4, 0x20AC}},
        {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}},
        {"\xEF\xBF\xBF", {0xFFFF}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(toUtf8(entry.utf16), entry.utf8);
        EXPECT_EQ(fromUtf8(entry.utf8), entry.utf16) << entry.utf8;
    }
}

TEST(Utf, RefusesWhatIsNotUtf8) {
    char const* const cases[] = {
        "\x80",              // continuation without a start
        "\xC3",              // cut short
        "\xC3(",             // wrong continuation
        "\xC0\xAF",          // overlong, two bytes
        "\xE0\x80\xAF",      // overlong, three bytes
        "\xF0\x80\x80\xAF",  // overlong, four bytes
        "\xED\xA0\x80",      // a surrogate
        "\xF4\x90\x80\x80",  // above the last code point
        "\xFF",
    };
    for (auto const* bytes : cases) EXPECT_FALSE(fromUtf8(bytes).has_value()) << bytes;
}

TEST(Utf, ShowsHalfASurrogatePairAsReplacement) {
    for (Text const& text : {Text{0xD800}, Text{0xDC00}, Text{0xD83D, 'x'}}) {
        EXPECT_EQ(toUtf8(text).substr(0, 3), "\xEF\xBF\xBD");
    }
}

TEST(Utf, ComparesAsciiLettersWithoutCase) {
    EXPECT_TRUE(equalIgnoringCase(OLESTR("ModuleZ9"), OLESTR("mODULEz9")));
    EXPECT_FALSE(equalIgnoringCase(OLESTR("module"), OLESTR("modul")));
    EXPECT_FALSE(equalIgnoringCase(OLESTR("@"), OLESTR("`")));
    EXPECT_FALSE(equalIgnoringCase(Text{0x00C4}, Text{0x00E4}));
}

}  // namespace
}  // namespace velk::com::test
