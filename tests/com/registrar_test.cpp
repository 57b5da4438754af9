#include "com/registrar.h"

#include <gmock/gmock.h>

#include "com/script_source.h"
#include "com/utf.h"
#include "memory_registry.h"

namespace velk::com::test {
namespace {

using Lines = std::vector<std::string>;
using testing::Contains;
using testing::Not;

class RegistrarTest : public testing::Test {
  protected:
    void install(std::string const& script) { registrar.registerScript(utf16(script)); }
    void remove(std::string const& script) { registrar.unregisterScript(utf16(script)); }
    Lines installed(std::string const& script) {
        install(script);
        return registry.lines();
    }
    void foreignKey(OLECHAR const* names) {
        ASSERT_EQ(registry.createKey({HKEY_CLASSES_ROOT, names}), ERROR_SUCCESS);
    }
    std::string dataOf(std::string const& data) {
        install("HKCR { A { val v = " + data + " } }");
        for (auto const& line : registry.lines()) {
            if (line.starts_with("HKCR\\A v = ")) return line.substr(11);
        }
        return "no value";
    }
    static std::basic_string<OLECHAR> utf16(std::string const& text) {
        return fromUtf8(text).value();
    }

    MemoryRegistry registry;
    Registrar registrar{registry};
};

TEST_F(RegistrarTest, WritesKeysDefaultsAndValues) {
    EXPECT_EQ(
        installed("HKCR\n{\n  A.B = s 'the text'\n  {\n    val Model = s Apartment\n"
                  "    Sub\n  }\n}\nhklm { NoRemove Soft { ForceRemove X } }"),
        (Lines{"HKCR", "HKCR\\A.B", "HKCR\\A.B @ = 1:the text", "HKCR\\A.B Model = 1:Apartment",
               "HKCR\\A.B\\Sub", "HKLM", "HKLM\\Soft", "HKLM\\Soft\\X"}));
}

TEST_F(RegistrarTest, KnowsRootsByBothNames) {
    struct Case {
        char const* name;
        char const* line;
    };
    Case const cases[] = {
        {"HKCR", "HKCR\\K"},      {"HKEY_CLASSES_ROOT", "HKCR\\K"},
        {"HKCU", "HKCU\\K"},      {"HKEY_CURRENT_USER", "HKCU\\K"},
        {"HKLM", "HKLM\\K"},      {"HKEY_LOCAL_MACHINE", "HKLM\\K"},
        {"HKU", "HKU\\K"},        {"HKEY_USERS", "HKU\\K"},
        {"HKCC", "HKCC\\K"},      {"HKEY_CURRENT_CONFIG", "HKCC\\K"},
        {"hkey_Users", "HKU\\K"},
    };
    for (auto const& entry : cases) {
        registry = {};
        EXPECT_THAT(installed(std::string(entry.name) + " { K }"), Contains(entry.line));
    }
}

TEST_F(RegistrarTest, ReadsEveryTypeOfData) {
    struct Case {
        char const* data;
        char const* expected;
    };
    Case const cases[] = {
        {"s 'a b'", "1:a b"},
        {"S ''", "1:"},
        {"s 'it''s'", "1:it's"},
        {"s ''''", "1:'"},
        {"s {a}", "1:{a}"},
        {"s '  {  '", "1:  {  "},
        {"s 'line\nline'", "1:line\nline"},
        {"s '\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x98\x80'", "1:\xC3\xA4\xE6\xBC\xA2\xF0\x9F\x98\x80"},
        {"s 'http://x'", "1:http://x"},
        {"s http://x", "1:http://x"},
        {"e '%%TEMP%%'", "2:%TEMP%"},
        {"d 0", "4:00000000"},
        {"d '4294967295'", "4:ffffffff"},
        {"d 0x1F", "4:1f000000"},
        {"D &h10", "4:10000000"},
        {"b ''", "3:"},
        {"b 00fFA1", "3:00ffa1"},
        {"m ''", "7:0000"},
        {"m 'a\\0bc\\0'",
         "7:61000000"
         "620063000000"
         "0000"},
        {"m 'a\\0\\0b'",
         "7:61000000"
         "62000000"
         "0000"},
    };
    for (auto const& entry : cases) {
        registry = {};
        EXPECT_EQ(dataOf(entry.data), entry.expected) << entry.data;
    }
}

TEST_F(RegistrarTest, KeywordsInQuotesAreNames) {
    EXPECT_EQ(installed("HKCR { 'Delete' 'NoRemove' 'val' = s 'x' '{' { 'ForceRemove' } }"),
              (Lines{"HKCR", "HKCR\\Delete", "HKCR\\NoRemove", "HKCR\\val", "HKCR\\val @ = 1:x",
                     "HKCR\\{", "HKCR\\{\\ForceRemove"}));
}

TEST_F(RegistrarTest, PutsReplacementsInWithoutRegardToCase) {
    registrar.addReplacement(OLESTR("Module"), OLESTR("old"));
    registrar.addReplacement(OLESTR("MODULE"), doubleQuotes(OLESTR("/it's here/x.dll")));
    registrar.addReplacement(OLESTR("empty"), {});
    registrar.addReplacement(OLESTR("percent"), OLESTR("%MODULE%"));
    EXPECT_EQ(dataOf("s '%module%'"), "1:/it's here/x.dll");
    EXPECT_EQ(dataOf("s 'a%EMPTY%b'"), "1:ab");
    EXPECT_EQ(dataOf("s '%Percent%'"), "1:%MODULE%") << "a replacement is not replaced again";
    EXPECT_EQ(dataOf("s '100%%'"), "1:100%");
}

TEST_F(RegistrarTest, SlashesOfAReplacementAreNoComment) {
    registrar.addReplacement(OLESTR("PATH"), OLESTR("//server/share"));
    EXPECT_EQ(dataOf("s %PATH% // a comment with 'quotes, 100% of it\n"), "1://server/share");
}

TEST_F(RegistrarTest, PerUserMovesClassesOnly) {
    registrar.setPerUser(true);
    EXPECT_EQ(installed("HKCR { A } HKLM { B }"),
              (Lines{"HKCU", "HKCU\\Software", "HKCU\\Software\\Classes",
                     "HKCU\\Software\\Classes\\A", "HKLM", "HKLM\\B"}));
    remove("HKCR { A } HKLM { B }");
    EXPECT_THAT(registry.lines(), Not(Contains("HKCU\\Software\\Classes\\A")));
}

TEST_F(RegistrarTest, PerUserValuesNeedNoKeyOfTheUserBefore) {
    registrar.setPerUser(true);
    EXPECT_THAT(installed("HKCR { val V = s 'v' }"), Contains("HKCU\\Software\\Classes V = 1:v"));
}

TEST_F(RegistrarTest, RegisteringTwiceReplacesWhatForceRemoveMarks) {
    std::string const script = "HKCR { NoRemove CLSID { ForceRemove {1} = s 'x' { Sub } } }";
    Lines const once = installed(script);
    foreignKey(OLESTR("CLSID\\{1}\\Stale"));
    foreignKey(OLESTR("CLSID\\{2}"));
    Lines twice = installed(script);
    EXPECT_THAT(twice, Contains("HKCR\\CLSID\\{2}"));
    std::erase(twice, "HKCR\\CLSID\\{2}");
    EXPECT_EQ(twice, once);
}

TEST_F(RegistrarTest, UnregisteringTakesBackItsOwn) {
    std::string const script =
        "HKCR { A.1 = s 'x' { CLSID = s '{1}' } "
        "NoRemove CLSID { ForceRemove {1} = s 'x' { InprocServer32 { val T = s 'y' } } } "
        "NoRemove AppID { {2} = s 'a' X.DLL { val AppID = s '{2}' } } }";
    install(script);
    remove(script);
    EXPECT_EQ(registry.lines(), (Lines{"HKCR", "HKCR\\AppID", "HKCR\\CLSID"}));
    remove(script);
    EXPECT_EQ(registry.lines(), (Lines{"HKCR", "HKCR\\AppID", "HKCR\\CLSID"}))
        << "what is gone already is no failure";
}

TEST_F(RegistrarTest, UnregisteringLeavesKeysOfOthers) {
    std::string const script =
        "HKCR { A = s 'x' { Own val V = s 'v' } NoRemove Keep = s 'k' { val V = s 'v' } "
        "ForceRemove Whole { Sub } }";
    install(script);
    foreignKey(OLESTR("A\\Foreign"));
    foreignKey(OLESTR("Whole\\Foreign"));
    remove(script);
    EXPECT_EQ(registry.lines(), (Lines{"HKCR", "HKCR\\A", "HKCR\\A @ = 1:x", "HKCR\\A\\Foreign",
                                       "HKCR\\Keep", "HKCR\\Keep @ = 1:k"}));
}

TEST_F(RegistrarTest, DeleteRemovesAtRegistrationOnly) {
    foreignKey(OLESTR("Old\\Sub"));
    EXPECT_EQ(installed("HKCR { Delete Old Delete Missing New }"), (Lines{"HKCR", "HKCR\\New"}));
    foreignKey(OLESTR("Old"));
    remove("HKCR { Delete Old New }");
    EXPECT_EQ(registry.lines(), (Lines{"HKCR", "HKCR\\Old"}));
}

TEST_F(RegistrarTest, ARefusedOperationNamesItsKey) {
    struct Case {
        int allowed;
        bool install;
        char const* message;
    };
    std::string const script = "HKCR { A = s 'x' { val V = s 'v' ForceRemove B } }";
    Case const cases[] = {
        {0, true, "cannot create HKEY_LOCAL_MACHINE\\Software\\Classes\\A: 0x80070005"},
        {1, true,
         "cannot write the default value of HKEY_LOCAL_MACHINE\\Software\\Classes\\A: 0x80070005"},
        {2, true,
         "cannot write the value \"V\" of HKEY_LOCAL_MACHINE\\Software\\Classes\\A: 0x80070005"},
        {3, true, "cannot delete HKEY_LOCAL_MACHINE\\Software\\Classes\\A\\B: 0x80070005"},
        {0, false, "cannot delete a value of HKEY_LOCAL_MACHINE\\Software\\Classes\\A: 0x80070005"},
        {2, false, "cannot delete HKEY_LOCAL_MACHINE\\Software\\Classes\\A: 0x80070005"},
    };
    for (auto const& entry : cases) {
        registry = {};
        if (!entry.install) install(script);
        registry.allowed = static_cast<std::uint64_t>(entry.allowed);
        try {
            entry.install ? install(script) : remove(script);
            ADD_FAILURE() << "no error instead of " << entry.message;
        } catch (Error const& error) {
            EXPECT_EQ(error.code(), E_ACCESSDENIED);
            EXPECT_STREQ(error.what(), entry.message);
        }
    }
}

TEST(ScriptSource, DecodesByItsMark) {
    EXPECT_EQ(decodeScript("HKCR"), OLESTR("HKCR"));
    EXPECT_EQ(decodeScript("\xEF\xBB\xBFH"), OLESTR("H"));
    EXPECT_EQ(decodeScript(std::string("\xFF\xFEH\0\xE4\0", 6)),
              (std::basic_string<OLECHAR>{'H', 0x00E4}));
    EXPECT_EQ(decodeScript(""), OLESTR(""));
    EXPECT_THROW(decodeScript("\xFF\xFEH"), Error);
    EXPECT_THROW(decodeScript("H\xE4"), Error);
}

}  // namespace
}  // namespace velk::com::test
