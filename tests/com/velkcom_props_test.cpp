#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include "com/com_ptr.h"
#include "com/utf.h"
#include "command_line.h"
#include "program.h"
#include "support/expected_difference.h"
#include "system.h"

// "velkcom props": its command line, and its work on documents that it makes.

namespace velk::velkcom::test {
namespace {

using velk::test::expectDifference;
using velk::test::runsOn;
using velk::test::System;
using Arguments = std::vector<std::string>;

std::string mistakeIn(Arguments const& arguments) {
    try {
        parseCommandLine(arguments);
        return "none";
    } catch (UsageError const& error) {
        return error.what();
    }
}

TEST(PropsCommandLine, IsRead) {
    auto const listing =
        std::get<PropsCommand>(parseCommandLine({"props", "list", "a.doc", "--json", "folder"}));
    EXPECT_EQ(listing.action, PropsCommand::Action::list);
    EXPECT_EQ(listing.operands, (Arguments{"a.doc", "folder"}));
    EXPECT_TRUE(listing.json);
    auto const writing = std::get<PropsCommand>(
        parseCommandLine({"props", "set", "--type", "i4", "a.doc", "custom", "--", "--key", "-5"}));
    EXPECT_EQ(writing.action, PropsCommand::Action::set);
    EXPECT_EQ(writing.operands, (Arguments{"a.doc", "custom", "--key", "-5"}));
    EXPECT_EQ(writing.type, "i4");
}

TEST(PropsCommandLine, MistakesAreTold) {
    struct Case {
        Arguments arguments;
        char const* mistake;
    };
    Case const cases[] = {
        {{"props"}, "\"props\" needs list, get, set, remove, rename or create"},
        {{"props", "show"}, "\"props\" has no \"show\""},
        {{"props", "list"}, "\"props list\" needs a FILE or FOLDER"},
        {{"props", "get", "f", "s"}, "\"props get\" needs a FILE, a SET and a KEY"},
        {{"props", "get", "f", "s", "k", "v"}, "\"props get\" does not take the argument \"v\""},
        {{"props", "get", "f", "s", "k", "--json"}, "\"props get\" has no option \"--json\""},
        {{"props", "list", "f", "--type", "i4"}, "\"props list\" has no option \"--type\""},
        {{"props", "set", "f", "s", "k", "v", "--type"}, "\"--type\" needs a TYPE"}};
    for (Case const& entry : cases) EXPECT_EQ(mistakeIn(entry.arguments), entry.mistake);
}

class Props : public testing::Test {
  protected:
    void SetUp() override {
        folder_ = std::filesystem::temp_directory_path() /
                  ("velkprops" + std::to_string(std::random_device()()));
        std::filesystem::create_directory(folder_);
        file_ = pathToUtf8(folder_ / "document.doc");
        ASSERT_EQ(run({"create", file_}), "0 ");
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    /// The exit code, and what was printed.
    std::string run(Arguments arguments) {
        arguments.insert(arguments.begin(), "props");
        std::ostringstream out, errors;
        int const code = runProgram(arguments, out, errors);
        errors_ = errors.str();
        return std::to_string(code) + " " + out.str();
    }
    std::string get(char const* set, char const* key) { return run({"get", file_, set, key}); }
    std::string put(char const* set, char const* key, char const* value, char const* type = "") {
        Arguments arguments{"set", file_, set, key, value};
        if (*type != 0) arguments.insert(arguments.end(), {"--type", type});
        return run(arguments);
    }

    std::string bytesOfFile() const {
        std::ifstream file(pathFromUtf8(file_), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::filesystem::path folder_;
    std::string file_;
    std::string errors_;
};

TEST_F(Props, WellKnownPropertiesGoByNameAndNumber) {
    EXPECT_EQ(put("summary", "Title", "A report"), "0 ");
    EXPECT_EQ(put("SummaryInformation", "14", "3"), "0 ");
    EXPECT_EQ(put("DocSummary", "company", "Us"), "0 ");
    EXPECT_EQ(get("summary", "2"), "0 A report\n");
    EXPECT_EQ(get("summary", "PageCount"), "0 3\n");
    EXPECT_EQ(get("{D5CDD502-2E9C-101B-9397-08002B2CF9AE}", "15"), "0 Us\n");
    EXPECT_EQ(put("summary", "Title", "Another"), "0 ");
    EXPECT_EQ(get("summary", "title"), "0 Another\n");
    EXPECT_EQ(run({"remove", file_, "summary", "Title"}), "0 ");
    EXPECT_EQ(get("summary", "Title").substr(0, 2), "1 ");
    EXPECT_NE(errors_.find("has no property \"Title\""), std::string::npos);
    EXPECT_EQ(run({"remove", file_, "summary", "Title"}).substr(0, 2), "1 ");
}

TEST_F(Props, ValuesHaveTheirTypes) {
    struct Case {
        char const* type;
        char const* text;
        char const* read;
    };
    Case const cases[] = {{"i2", "-3", "65533"},
                          {"VT_I4", "-70000", "-70000"},
                          {"lpwstr", "\xd0\x96", "\xd0\x96"},
                          {"ui4", "4000000000", "4000000000"}};
    for (Case const& entry : cases) {
        EXPECT_EQ(put("summary", "100", entry.text, entry.type), "0 ") << entry.type;
        EXPECT_EQ(get("summary", "100"), std::string("0 ") + entry.read + "\n") << entry.type;
    }
    expectDifference(System::wine, "it writes a few types only", [&] {
        for (Case const& entry : {Case{"r8", "2.5", "2.5"}, Case{"r4", "-0.5", "-0.5"},
                                  Case{"bool", "true", "true"}, Case{"bstr", "text", "text"}}) {
            EXPECT_EQ(put("summary", "100", entry.text, entry.type), "0 ") << entry.type;
            EXPECT_EQ(get("summary", "100"), std::string("0 ") + entry.read + "\n") << entry.type;
        }
    });
}

TEST_F(Props, ValuesThatTheTypeCannotHoldChangeNothing) {
    EXPECT_EQ(put("summary", "Title", "kept"), "0 ");
    struct Case {
        char const* type;
        char const* text;
    };
    for (Case const& entry :
         {Case{"i2", "70000"}, Case{"i4", "five"}, Case{"i4", "5x"}, Case{"r8", ""},
          Case{"bool", "maybe"}, Case{"filetime", "2024-13-01"}, Case{"filetime", "2024-03-05Tx"},
          Case{"empty", "not"}, Case{"blob", "x"}, Case{"nothing", "x"}}) {
        EXPECT_EQ(put("summary", "Title", entry.text, entry.type), "2 ") << entry.type;
    }
    EXPECT_EQ(get("summary", "Title"), "0 kept\n");
    EXPECT_EQ(put("nowhere", "Title", "x"), "2 ");
    EXPECT_EQ(put("{nonsense}", "Title", "x"), "2 ");
}

TEST_F(Props, TimesAreReadAsTheyAreWritten) {
    struct Case {
        char const* text;
        char const* read;
    };
    Case const cases[] = {{"2024-03-05T09:07:04.045Z", "2024-03-05T09:07:04.045Z"},
                          {"2024-03-05T09:07:04.0450001Z", "2024-03-05T09:07:04.0450001Z"},
                          {"2024-03-05T09:07:04.5+00:00", "2024-03-05T09:07:04.5Z"},
                          {"2024-03-05T00:07-01:30", "2024-03-05T01:37:00Z"},
                          {"2024-01-01T00:30:00+01:00", "2023-12-31T23:30:00Z"},
                          {"1601-01-01", "1601-01-01T00:00:00Z"},
                          {"30827-12-31T23:59:59Z", "30827-12-31T23:59:59Z"}};
    for (Case const& entry : cases) {
        for (char const* text : {entry.text, entry.read}) {
            EXPECT_EQ(put("summary", "100", text, "filetime"), "0 ") << text;
            EXPECT_EQ(get("summary", "100"), std::string("0 ") + entry.read + "\n") << text;
        }
        auto const quoted = std::string("\"value\": \"") + entry.read + "\"";
        EXPECT_NE(run({"list", "--json", file_}).find(quoted), std::string::npos) << entry.text;
    }
    for (char const* text :
         {"2024-03-05T09:07:04.", "2024-03-05T09:07:04.00000001", "2024-03-05T09:07+24:00",
          "2024-03-05T09:07+1", "1601-01-01T00:00+00:01", "024-03-05", "2024-03-05T09:07ZZ"}) {
        EXPECT_EQ(put("summary", "100", text, "filetime"), "2 ") << text;
    }
}

TEST_F(Props, RefusedChangesLeaveTheFileByteForByte) {
    auto const expectRefused = [&](Arguments const& change) {
        auto const before = bytesOfFile();
        EXPECT_NE(run(change).substr(0, 2), "0 ") << change[2];
        EXPECT_TRUE(bytesOfFile() == before) << change[0] << " " << change[2];
    };
    std::string const longName(300, 'n');
    expectRefused({"set", file_, "{8D06BE37-1234-4321-9091-929394959697}", longName, "x"});
    expectRefused({"set", file_, "media", "1", "x"});
    expectRefused({"set", file_, "summary", "0", "x"});
    expectRefused({"rename", file_, "summary", "99", "name"});
    expectRefused({"remove", file_, "summary", "99"});
    expectDifference(System::wine, "it takes names of any length, and knows what has none", [&] {
        expectRefused({"remove", file_, "custom", "nobody"});
        expectRefused({"set", file_, "custom", longName, "x"});
    });
}

TEST_F(Props, NamesAreMadeChangedAndRemoved) {
    expectDifference(System::wine, "it does not read every dictionary of names", [&] {
        EXPECT_EQ(put("custom", "Client", "Zoe"), "0 ");
        EXPECT_EQ(put("custom", "Count", "5", "i4"), "0 ");
        EXPECT_EQ(get("custom", "CLIENT"), "0 Zoe\n");
        EXPECT_EQ(get("custom", "3"), "0 5\n");
        EXPECT_EQ(run({"rename", file_, "custom", "Client", "count"}).substr(0, 2), "1 ");
        EXPECT_NE(errors_.find("already"), std::string::npos);
        EXPECT_EQ(run({"rename", file_, "custom", "Client", "Customer"}), "0 ");
        EXPECT_EQ(get("custom", "Client").substr(0, 2), "1 ");
        EXPECT_EQ(get("custom", "customer"), "0 Zoe\n");
        EXPECT_EQ(run({"remove", file_, "custom", "Count"}), "0 ");
        EXPECT_EQ(get("custom", "Count").substr(0, 2), "1 ");
        EXPECT_EQ(get("custom", "Customer"), "0 Zoe\n");
    });
}

TEST_F(Props, ListsShowEverySet) {
    EXPECT_EQ(put("summary", "Title", "line\none", "lpwstr"), "0 ");
    EXPECT_EQ(put("summary", "14", "7"), "0 ");
    auto const text = run({"list", file_});
    EXPECT_NE(text.find("    2  Title  VT_LPWSTR  line\\none\n"), std::string::npos) << text;
    EXPECT_NE(text.find("    14  PageCount  VT_I4  7\n"), std::string::npos) << text;
    auto const json = run({"list", "--json", file_});
    EXPECT_NE(json.find("{\"key\": \"2\", \"id\": 2, \"name\": \"Title\", \"type\": \"VT_LPWSTR\", "
                        "\"value\": \"line\\u000aone\"}"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find("\"error\": null, \"sets\": [{\"name\": \"SummaryInformation\", "
                        "\"formatId\": \"{F29F85E0-4FF9-1068-AB91-08002B27B3D9}\""),
              std::string::npos)
        << json;
}

TEST_F(Props, FoldersAreSearchedAndOthersPassedOver) {
    std::filesystem::create_directory(folder_ / "inner");
    EXPECT_EQ(run({"create", pathToUtf8(folder_ / "inner" / "second.doc")}), "0 ");
    std::ofstream(folder_ / "text.txt") << "no document";
    auto const listed = run({"list", "--json", pathToUtf8(folder_)});
    EXPECT_EQ(listed.substr(0, 2), "0 ");
    EXPECT_EQ(std::ranges::count(listed, '\n'), 2);
    auto const named = run({"list", "--json", pathToUtf8(folder_ / "text.txt"), file_});
    EXPECT_EQ(named.substr(0, 2), "1 ");
    EXPECT_NE(named.find("\"error\": \"the file is no compound file\", \"sets\": []}"),
              std::string::npos);
    EXPECT_EQ(std::ranges::count(named, '\n'), 2);
}

// A set that cannot be read is not taken for one that is missing, and the others are listed.
TEST_F(Props, DamagedSetsAreToldAndKept) {
    EXPECT_EQ(put("docsummary", "Company", "Us"), "0 ");
    EXPECT_EQ(put("summary", "Title", "kept"), "0 ");
    auto bytes = bytesOfFile();
    GUID const summary = {
        0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
    std::string const id(reinterpret_cast<char const*>(&summary), sizeof summary);
    ASSERT_NE(bytes.find(id), std::string::npos);
    // The list of one set, the section's size, and the number of its properties; former states
    // of the stream are in the file too.
    for (auto at = bytes.find(id); at != std::string::npos; at = bytes.find(id, at + 1)) {
        bytes.replace(at + sizeof summary + 4 + 4, 4, "\xff\xff\xff\x7f");
    }
    std::ofstream(pathFromUtf8(file_), std::ios::binary) << bytes;
    expectDifference(System::wine, "it has its own view of damage", [&] {
        auto const listed = run({"list", file_});
        EXPECT_EQ(listed.substr(0, 2), "1 ");
        EXPECT_NE(listed.find("Company"), std::string::npos) << listed;
        EXPECT_NE(errors_.find("SummaryInformation: a property set cannot be opened: 0x800300FB "
                               "(the file is damaged)"),
                  std::string::npos)
            << errors_;
        EXPECT_EQ(put("summary", "Title", "x"), "1 ");
        EXPECT_EQ(run({"remove", file_, "summary", "Title"}), "1 ");
        EXPECT_TRUE(bytesOfFile() == bytes);
    });
}

// What is there and no set is told as such, beside the sets that are.
TEST_F(Props, WhatHasASetsNameAndIsNoneIsTold) {
    if (runsOn(System::wine)) GTEST_SKIP() << "it has its own view of damage";
    constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    std::string const document = pathToUtf8(folder_ / "odd.doc");
    for (bool const isStorage : {false, true}) {
        com::ComPtr<IStorage> root, storage;
        com::ComPtr<IStream> stream;
        ASSERT_EQ(
            StgCreateDocfile(com::fromUtf8(document)->c_str(), mode | STGM_CREATE, 0, root.put()),
            S_OK);
        OLECHAR const* const name = OLESTR("\5SummaryInformation");
        ASSERT_EQ(isStorage ? root->CreateStorage(name, mode, 0, 0, storage.put())
                            : root->CreateStream(name, mode, 0, 0, stream.put()),
                  S_OK);
        stream = {};
        storage = {};
        root = {};
        EXPECT_EQ(put("docsummary", "Company", "Us"), "0 ");
        auto const listed = run({"list", document, file_});
        EXPECT_EQ(listed.substr(0, 2), "1 ") << isStorage;
        EXPECT_NE(listed.find("Company"), std::string::npos);
        EXPECT_NE(errors_.find("SummaryInformation: what has its name is no property set"),
                  std::string::npos)
            << errors_;
    }
}

// A place that cannot be searched is reported, and the others are listed.
TEST_F(Props, FoldersOfWhichAPartCannotBeReadAreListed) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "it makes no paths of this length";
    auto const nested = [&](char const* first, int depth) {
        auto path = folder_ / first;
        for (int i = 0; i < depth; ++i) path /= std::string(250, 'd');
        std::filesystem::create_directories(path);
        return path;
    };
    // Together they are longer than any path that the system opens.
    nested("inner", 12);
    std::filesystem::rename(folder_ / "inner", nested("outer", 12) / "inner");
    auto const listed = run({"list", pathToUtf8(folder_)});
    EXPECT_EQ(listed.substr(0, 2), "1 ");
    EXPECT_NE(listed.find(file_), std::string::npos);
    EXPECT_NE(errors_.find("the folder cannot be read"), std::string::npos) << errors_;
}

// So many that several threads read them.
TEST_F(Props, ManyFilesAreListedInOrder) {
    EXPECT_EQ(put("summary", "14", "7"), "0 ");
    auto const many = folder_ / "many";
    std::filesystem::create_directory(many);
    constexpr int files = 200;
    for (int i = 0; i < files; ++i) {
        std::filesystem::copy_file(pathFromUtf8(file_), many / std::to_string(1000 + i));
    }
    std::ofstream(many / "1099") << "no document";
    std::istringstream listed(run({"list", "--json", pathToUtf8(many)}));
    std::string line;
    for (int i = 0; i < files; ++i) {
        if (i == 99) continue;
        ASSERT_TRUE(std::getline(listed, line)) << i;
        EXPECT_NE(line.find(std::to_string(1000 + i) + "\", \"error\": null"), std::string::npos)
            << line;
        EXPECT_NE(line.find("\"PageCount\", \"type\": \"VT_I4\", \"value\": 7}"), std::string::npos)
            << line;
    }
    EXPECT_FALSE(std::getline(listed, line));
}

TEST_F(Props, FilesThatAreThereAreNotMadeAnew) {
    EXPECT_EQ(put("summary", "Title", "kept"), "0 ");
    EXPECT_EQ(run({"create", file_}), "1 ");
    EXPECT_EQ(get("summary", "Title"), "0 kept\n");
    EXPECT_EQ(run({"get", pathToUtf8(folder_ / "nothing.doc"), "summary", "Title"}), "1 ");
    EXPECT_NE(errors_.find("the file is not there"), std::string::npos) << errors_;
}

}  // namespace
}  // namespace velk::velkcom::test
