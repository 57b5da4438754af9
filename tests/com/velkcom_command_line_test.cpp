#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "command_line.h"
#include "help_text.h"
#include "member_path.h"
#include "program.h"

namespace velk::velkcom::test {
namespace {

using Arguments = std::vector<std::string>;

std::string mistakeIn(Arguments const& arguments) {
    try {
        parseCommandLine(arguments);
        return "none";
    } catch (UsageError const& error) {
        return error.what();
    }
}

TEST(CommandLine, ReadsRegistration) {
    struct Case {
        Arguments arguments;
        bool install;
        bool perUser;
        char const* module;
    };
    Case const cases[] = {
        {{"register"}, true, false, ""},
        {{"register", "--user"}, true, true, ""},
        {{"unregister", "a b's.so", "--user"}, false, true, "a b's.so"},
        {{"register", "--", "--user"}, true, false, "--user"},
    };
    for (auto const& entry : cases) {
        auto const command = std::get<RegisterCommand>(parseCommandLine(entry.arguments));
        EXPECT_EQ(command.install, entry.install);
        EXPECT_EQ(command.perUser, entry.perUser);
        EXPECT_EQ(command.module, entry.module);
    }
}

TEST(CommandLine, ReadsCalls) {
    auto const command = std::get<CallCommand>(
        parseCommandLine({"call", "A.B", "--put", "Item", "-5", "--", "--x"}));
    EXPECT_EQ(command.progId, "A.B");
    EXPECT_EQ(command.member, "Item");
    EXPECT_EQ(command.arguments, (Arguments{"-5", "--x"}));
    EXPECT_EQ(command.access, Access::put);
    EXPECT_EQ(std::get<TypelibCommand>(parseCommandLine({"typelib", "x.tlb"})).file, "x.tlb");
}

TEST(CommandLine, HelpAndVersionComeBeforeMistakes) {
    EXPECT_EQ(std::get<HelpCommand>(parseCommandLine({"--help"})).topic, "");
    EXPECT_EQ(std::get<HelpCommand>(parseCommandLine({"call", "--help"})).topic, "call");
    EXPECT_EQ(std::get<HelpCommand>(parseCommandLine({"help", "typelib"})).topic, "typelib");
    EXPECT_TRUE(std::holds_alternative<VersionCommand>(parseCommandLine({"--version"})));
}

TEST(CommandLine, SaysWhatIsWrong) {
    struct Case {
        Arguments arguments;
        char const* mistake;
    };
    Case const cases[] = {
        {{}, "no command"},
        {{"run"}, "unknown command \"run\""},
        {{"register", "--all"}, "\"register\" has no option \"--all\""},
        {{"register", "a", "b"}, "\"register\" does not take the argument \"b\""},
        {{"register", ""}, "the path of the module is empty"},
        {{"call", "A.B"}, "\"call\" needs a PROGID and a MEMBER"},
        {{"call", "A.B", "M", "--user"}, "\"call\" has no option \"--user\""},
        {{"call", "A.B", "M", "--get", "--put"}, "\"--put\" contradicts an option before it"},
        {{"typelib"}, "\"typelib\" needs a FILE"},
        {{"typelib", "a", "b"}, "\"typelib\" does not take the argument \"b\""},
    };
    for (auto const& entry : cases) EXPECT_EQ(mistakeIn(entry.arguments), entry.mistake);
}

TEST(MemberPath, ReadsSteps) {
    struct Case {
        char const* path;
        std::vector<MemberStep> steps;
    };
    Case const cases[] = {
        {"Count", {{"Count", {}}}},
        {"", {{"", {}}}},
        {"A.B", {{"A", {}}, {"B", {}}}},
        {"CreateObject(scripting.dictionary).Count",
         {{"CreateObject", {{"scripting.dictionary"}}}, {"Count", {}}}},
        {"M()", {{"M", {}}}},
        {"M( 1 ,int:2 , a b )", {{"M", {{"1"}, {"int:2"}, {"a b"}}}}},
        {R"(M("x, ""y"") ", "").N)", {{"M", {{"x, \"y\") ", true}, {"", true}}}, {"N", {}}}},
        {"Item(1).", {{"Item", {{"1"}}}, {"", {}}}},
        {"Items.(2).Name", {{"Items", {}}, {"", {{"2"}}}, {"Name", {}}}},
    };
    for (auto const& entry : cases)
        EXPECT_EQ(parseMemberPath(entry.path), entry.steps) << entry.path;
}

TEST(MemberPath, NamesThePlaceOfAMistake) {
    struct Case {
        char const* path;
        char const* mistake;
    };
    Case const cases[] = {
        {"A(1", "member \"A(1\", character 4: expected a comma or a closing parenthesis"},
        {"A(,1)", "member \"A(,1)\", character 3: an argument is missing"},
        {"A(1,)", "member \"A(1,)\", character 5: an argument is missing"},
        {"A(\"x)", "member \"A(\"x)\", character 6: expected a closing quote"},
        {"A(\"x\" y)",
         "member \"A(\"x\" y)\", character 7: expected a comma or a closing "
         "parenthesis"},
        {"A(1)B", "member \"A(1)B\", character 5: expected a dot or the end"},
        {"A)", "member \"A)\", character 2: expected a dot or the end"},
        {".A", "member \".A\", character 3: a name before a dot is missing"},
    };
    for (auto const& entry : cases) {
        try {
            parseMemberPath(entry.path);
            ADD_FAILURE() << "no mistake in " << entry.path;
        } catch (UsageError const& error) {
            EXPECT_STREQ(error.what(), entry.mistake);
        }
    }
}

struct Run {
    int code;
    std::string out;
    std::string errors;
};
Run run(Arguments const& arguments) {
    std::ostringstream out;
    std::ostringstream errors;
    int const code = runProgram(arguments, out, errors);
    return {code, out.str(), errors.str()};
}

TEST(Program, EndsWithTheCodeOfItsOutcome) {
    EXPECT_EQ(run({"--help"}).code, 0);
    EXPECT_EQ(run({"--help"}).out, helpText(""));
    EXPECT_NE(helpText("call"), helpText(""));
    auto const mistake = run({"call", "A.B", "M(", "1"});
    EXPECT_EQ(mistake.code, 2);
    EXPECT_EQ(mistake.out, "");
    EXPECT_NE(mistake.errors.find("an argument is missing"), std::string::npos) << mistake.errors;
    auto const unknown = run({"call", "VelkTests.NoSuchClass", "Member"});
    EXPECT_EQ(unknown.code, 1);
    EXPECT_EQ(unknown.errors,
              "velkcom: cannot create \"VelkTests.NoSuchClass\": CO_E_CLASSSTRING (0x800401F3): no "
              "class is registered under this name\n");
    auto const missing = run({"register", "--user", "no such folder/it's.so"});
    EXPECT_EQ(missing.code, 1);
    auto const module = std::filesystem::path("no such folder/it's.so").make_preferred().string();
    EXPECT_NE(missing.errors.find(module), std::string::npos) << missing.errors;
    EXPECT_NE(missing.errors.find("0x8007007E"), std::string::npos) << missing.errors;
}

TEST(Program, PrintsTheLibraryOfAModuleThatIsAskedFor) {
    struct Case {
        char const* number;
        int code;
        char const* library;
    };
    Case const cases[] = {
        {"", 0, "library VelkComTestsLib"},
        {"/1", 0, "library VelkComTestsLib"},
        {"\\1", 0, "library VelkComTestsLib"},
        {"/2", 0, "library Shapes"},
        {"\\2", 0, "library Shapes"},
        {"/3", 1, ""},
        {"\\3", 1, ""},
        {"/2x", 1, ""},
    };
    for (auto const& entry : cases) {
        auto const printed = run({"typelib", VELKCOM_TWO_LIBRARIES + std::string(entry.number)});
        EXPECT_EQ(printed.code, entry.code) << entry.number << ": " << printed.errors;
        EXPECT_NE(printed.out.find(entry.library), std::string::npos) << entry.number;
    }
    for (char const* number : {"/2", "\\2"}) {
        auto const value =
            run({"enum", VELKCOM_TWO_LIBRARIES + std::string(number), "Color", "Green"});
        EXPECT_EQ(value.code, 0) << value.errors;
    }
    for (char const* topic : {"typelib", "enum"}) {
        EXPECT_NE(helpText(topic).find("x.dll/2"), std::string::npos) << topic;
    }
}

}  // namespace
}  // namespace velk::velkcom::test
