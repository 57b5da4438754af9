#include "com/registration/registrar.h"

#include <sstream>

#include <gtest/gtest.h>

#include "com/registration/script.h"
#include "com/utf.h"
#include "memory_registry.h"
#include "support/data_table.h"

namespace velk::com::test {
namespace {

using velk::test::DataRow;
using velk::test::expectTable;
using Text = std::basic_string<OLECHAR>;

/// A registry, and a registrar with what the scripts of the tables name.
struct Registered {
    Registered() {
        registrar.addReplacement(OLESTR("NAME"), OLESTR("two words"));
        registrar.addReplacement(OLESTR("QUOTE"), OLESTR("it's"));
        registrar.addReplacement(OLESTR("NUL"), TextView(OLESTR("a\0b"), 3));
        registrar.addReplacement(OLESTR("Module"), OLESTR("old"));
        registrar.addReplacement(OLESTR("MODULE"), doubleQuotes(OLESTR("/it's here/x.dll")));
        registrar.addReplacement(OLESTR("percent"), OLESTR("%MODULE%"));
        registrar.addReplacement(OLESTR("EMPTY"), {});
        registrar.addReplacement(OLESTR("PATH"), OLESTR("//server/share"));
    }

    /// One word of the column "do".
    void carryOut(std::string const& word, Text const& script) {
        if (word == "+") registrar.registerScript(script);
        if (word == "-") registrar.unregisterScript(script);
        if (word == "user") registrar.setPerUser(true);
        auto const value = word.substr(word.find(':') + 1);
        if (word.starts_with("theirs:"))
            registry.createKey({HKEY_CLASSES_ROOT, fromUtf8(value).value()});
        if (word.starts_with("allow:")) registry.allowed = std::stoul(value);
    }

    MemoryRegistry registry;
    Registrar registrar{registry};
};

std::string outcomeOf(std::string const& words, std::string const& script) {
    Registered made;
    try {
        std::istringstream steps(words);
        for (std::string word; steps >> word;) made.carryOut(word, fromUtf8(script).value());
        return textOf(made.registry.table(), " | ");
    } catch (Error const& error) {
        bool const isMistake = error.code() == HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
        EXPECT_TRUE(isMistake || error.code() == E_ACCESSDENIED) << hexadecimal(error.code());
        EXPECT_EQ(isMistake, made.registry.writes == 0) << "found after something was written";
        return error.what();
    }
}

TEST(Registrar, CarriesScriptsOut) {
    expectTable("registrar/scripts.tsv",
                [](DataRow const& row) { return outcomeOf(row["do"], row["script"]); });
}

TEST(Registrar, ReadsEveryTypeOfData) {
    expectTable("registrar/data.tsv", [](DataRow const& row) {
        auto const all = outcomeOf("+", "HKCR { val v = " + row["data"] + " }");
        return all.substr(std::string("HKCR | HKCR:v = ").size());
    });
}

TEST(Registrar, NamesThePlaceOfAMistake) {
    expectTable("registrar/errors.tsv", [](DataRow const& row) {
        auto const error = outcomeOf("+", row["script"]);
        EXPECT_EQ(outcomeOf("-", row["script"]), error);
        return error;
    });
}

TEST(Registrar, LimitsNamesAndNesting) {
    std::string const key(255, 'k'), value(16383, 'v');
    EXPECT_EQ(outcomeOf("+", "HKCR { " + key + " }"), "HKCR | HKCR\\" + key);
    EXPECT_EQ(outcomeOf("+", "HKCR { " + key + "k }"),
              "1:8: the name of a key has more than 255 characters");
    EXPECT_EQ(outcomeOf("+", "HKCR { val " + value + " = s '' }"),
              "HKCR | HKCR:" + value + " = 1:");
    EXPECT_EQ(outcomeOf("+", "HKCR { val " + value + "v = s '' }"),
              "1:12: the name of a value has more than 16383 characters");
    auto const nested = [](int levels) {
        std::string script = "HKCR {", end = " }";
        for (int level = 1; level < levels; ++level) script += " k {", end += " }";
        return script + end;
    };
    EXPECT_EQ(outcomeOf("+ -", nested(512)), "HKCR");
    EXPECT_EQ(outcomeOf("+", nested(513)), "1:2054: keys are nested more than 512 levels deep");
}

TEST(ScriptSource, DecodesByItsMark) {
    expectTable("registrar/bytes.tsv", [](DataRow const& row) -> std::string {
        std::string bytes;
        for (std::size_t i = 0; i < row["bytes"].size(); i += 2)
            bytes += static_cast<char>(std::stoi(row["bytes"].substr(i, 2), nullptr, 16));
        try {
            return toUtf8(decodeScript(bytes));
        } catch (Error const& error) {
            EXPECT_EQ(error.code(), HRESULT_FROM_WIN32(ERROR_INVALID_DATA));
            return error.what();
        }
    });
}

}  // namespace
}  // namespace velk::com::test
