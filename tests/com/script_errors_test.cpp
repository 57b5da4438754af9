#include <gtest/gtest.h>

#include "com/registrar.h"
#include "com/utf.h"
#include "memory_registry.h"

namespace velk::com::test {
namespace {

std::string errorOf(std::basic_string<OLECHAR> const& script) {
    MemoryRegistry registry;
    Registrar registrar(registry);
    registrar.addReplacement(OLESTR("NAME"), OLESTR("two words"));
    registrar.addReplacement(OLESTR("QUOTE"), OLESTR("it's"));
    registrar.addReplacement(OLESTR("NUL"), TextView(OLESTR("a\0b"), 3));
    for (bool const install : {true, false}) {
        try {
            if (install) {
                registrar.registerScript(script);
            } else {
                registrar.unregisterScript(script);
            }
            return "no error";
        } catch (Error const& error) {
            EXPECT_EQ(error.code(), HRESULT_FROM_WIN32(ERROR_INVALID_DATA)) << error.what();
            EXPECT_EQ(registry.writes, 0U) << "a mistake must be found before anything is written";
            if (!install) return error.what();
        }
    }
    return {};
}

TEST(ScriptErrors, NamePlaceAndWhatWasExpected) {
    struct Case {
        char const* script;
        char const* error;
    };
    Case const cases[] = {
        {"",
         "1:1: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name) but found "
         "the end of the script"},
        {"  \n\t",
         "2:2: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name) but "
         "found the end of the script"},
        {"HKXX { }",
         "1:1: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name) but "
         "found \"HKXX\""},
        {"'HKCR' { }",
         "1:1: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name) "
         "but found \"HKCR\""},
        {"HKCR { } }",
         "1:10: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or its long name) "
         "but found \"}\""},
        {"HKCR", "1:5: expected \"{\" but found the end of the script"},
        {"HKCR = s 'x'", "1:6: expected \"{\" but found \"=\""},
        {"HKCR {", "1:7: expected \"}\" that closes the block opened at 1:6"},
        {"HKCR\r\n{\r\n\tA {\r\n}", "4:2: expected \"}\" that closes the block opened at 2:1"},
        {"HKCR { { } }", "1:8: expected the name of a key but found \"{\""},
        {"HKCR { = s 'x' }", "1:8: expected the name of a key but found \"=\""},
        {"HKCR { '' }", "1:8: expected the name of a key, which must not be empty"},
        {"HKCR { NoRemove }", "1:17: expected the name of a key but found \"}\""},
        {"HKCR { ForceRemove", "1:19: expected the name of a key but found the end of the script"},
        {"HKCR { Delete { } }", "1:15: expected the name of a key but found \"{\""},
        {"HKCR { Delete A = s 'x' }", "1:17: expected the name of a key but found \"=\""},
        {"HKCR { 'a\\b' }", "1:8: the name of a key must not contain \"\\\""},
        {"HKCR { val }", "1:12: expected the name of a value but found \"}\""},
        {"HKCR { val '' = s 'x' }", "1:12: expected the name of a value, which must not be empty"},
        {"HKCR { val A }", "1:14: expected \"=\" but found \"}\""},
        {"HKCR { val A s 'x' }", "1:14: expected \"=\" but found \"s\""},
        {"HKCR { A = }", "1:12: expected a type (s, e, d, b or m) but found \"}\""},
        {"HKCR { A = 'x' }", "1:12: expected a type (s, e, d, b or m) but found \"x\""},
        {"HKCR { A = s'x' }", "1:12: expected a type (s, e, d, b or m) but found \"s'x'\""},
        {"HKCR { A = q '1' }", "1:12: expected a type (s, e, d, b or m) but found \"q\""},
        {"HKCR { A = s }", "1:14: expected the data of the value but found \"}\""},
        {"HKCR { A = d 'x' }",
         "1:14: expected a number from 0 to 4294967295 (decimal, or "
         "hexadecimal after 0x or &H) but found \"x\""},
        {"HKCR { A = d 4294967296 }",
         "1:14: expected a number from 0 to 4294967295 (decimal, or "
         "hexadecimal after 0x or &H) but found \"4294967296\""},
        {"HKCR { A = d 0x }",
         "1:14: expected a number from 0 to 4294967295 (decimal, or "
         "hexadecimal after 0x or &H) but found \"0x\""},
        {"HKCR { A = d '' }",
         "1:14: expected a number from 0 to 4294967295 (decimal, or "
         "hexadecimal after 0x or &H) but found \"\""},
        {"HKCR { A = b 123 }", "1:14: expected pairs of hexadecimal digits but found \"123\""},
        {"HKCR { A = b 0g }", "1:14: expected pairs of hexadecimal digits but found \"0g\""},
        {"HKCR { A = s 'x }", "1:14: expected a quote that closes this text"},
        {"HKCR { A = s 'x''", "1:14: expected a quote that closes this text"},
        {"HKCR { A = s 'x'y }", "1:17: expected a blank after the closing quote"},
        {"HKCR { A = s '%QUOTE%' }", "1:15: expected a blank after the closing quote"},
        {"HKCR { %OTHER% }", "1:8: nothing is known to replace %OTHER%"},
        {"HKCR { A = s '100%' }", "1:18: expected a '%' that closes the replacement's name"},
        {"HKCR { A = s '%NAME\n%' }", "1:15: expected a '%' that closes the replacement's name"},
        {"HKCR { A = s '%NUL%' }", "1:15: a NUL character is not allowed in a replacement"},
        // A replacement is put in before words are told apart.
        {"HKCR { A = s %NAME% }\n}",
         "2:1: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or "
         "its long name) but found \"}\""},
        // A column is a character, however many units or bytes it takes.
        {"HKCR { '\xC3\xA4\xF0\x9F\x98\x80' ? = }",
         "1:17: expected a type (s, e, d, b or m) but found \"}\""},
        {"HKCR { // comment }\n ?? } }",
         "2:7: expected a root key (HKCR, HKCU, HKLM, HKU, HKCC or "
         "its long name) but found \"}\""},
    };
    for (auto const& entry : cases) {
        EXPECT_EQ(errorOf(fromUtf8(entry.script).value()), entry.error) << entry.script;
    }
}

TEST(ScriptErrors, NulInTheScript) {
    std::basic_string<OLECHAR> script = OLESTR("HKCR\n{ A }");
    script[8] = 0;
    EXPECT_EQ(errorOf(script), "2:4: a NUL character is not allowed");
}

TEST(ScriptErrors, NamesAndNestingHaveLimits) {
    using Text = std::basic_string<OLECHAR>;
    Text const longest(255, 'k');
    EXPECT_EQ(errorOf(OLESTR("HKCR { ") + longest + OLESTR(" }")), "no error");
    EXPECT_EQ(errorOf(OLESTR("HKCR { ") + longest + OLESTR("k }")),
              "1:8: the name of a key has more than 255 characters");
    Text const value(16384, 'v');
    EXPECT_EQ(errorOf(OLESTR("HKCR { val ") + value + OLESTR(" = d 1 }")),
              "1:12: the name of a value has more than 16383 characters");

    Text nested = OLESTR("HKCR {");
    for (int level = 0; level < 512; ++level) nested += OLESTR(" k {");
    EXPECT_EQ(errorOf(nested), "1:2054: keys are nested more than 512 levels deep");
}

}  // namespace
}  // namespace velk::com::test
