// "velkcom props" on many documents at once, and on damaged ones.

#include <algorithm>

#include <gtest/gtest.h>

#include <windows.h>

#include <objbase.h>

#include "com/com_ptr.h"
#include "com/utf.h"
#include "scratch_folder.h"
#include "support/expected_difference.h"

namespace velk::velkcom::test {
namespace {

using namespace velk::test;
namespace fs = std::filesystem;

class Documents : public testing::Test {
  protected:
    void SetUp() override {
        props({"create", "a.doc"});
        props({"set", "a.doc", "docsummary", "Company", "Us"});
        props({"set", "a.doc", "summary", "Title", "kept"});
        props({"set", "a.doc", "summary", "PageCount", "7"});
    }

    /// What is printed, by a command that ends with this code.
    std::string props(Arguments arguments, int code = 0) {
        arguments.insert(arguments.begin(), "props");
        auto const outcome = run(arguments);
        errors_ = outcome.errors;
        EXPECT_EQ(outcome.code, code) << outcome.errors;
        return outcome.out;
    }
    static bool contains(std::string const& text, std::string const& part) {
        return text.find(part) != text.npos;
    }

    ScratchFolder const folder_;
    std::string errors_;
};

// A set that cannot be read is not taken for one that is missing, and the others are listed.
TEST_F(Documents, DamagedSetsAreToldAndKept) {
    auto bytes = folder_.bytesOf("a.doc");
    GUID const summary = {
        0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}};
    std::string const id(reinterpret_cast<char const*>(&summary), sizeof summary);
    ASSERT_TRUE(contains(bytes, id));
    // The list of one set, the section's size, and the number of its properties; former states
    // of the stream are in the file too.
    for (auto at = bytes.find(id); at != bytes.npos; at = bytes.find(id, at + 1))
        bytes.replace(at + sizeof summary + 4 + 4, 4, "\xff\xff\xff\x7f");
    std::ofstream("a.doc", std::ios::binary) << bytes;
    expectDifference("odd-property-sets", [&] {
        EXPECT_TRUE(contains(props({"list", "a.doc"}, 1), "Company"));
        EXPECT_TRUE(contains(errors_,
                             "SummaryInformation: a property set cannot be opened: 0x800300FB "
                             "(the file is damaged)"))
            << errors_;
        props({"set", "a.doc", "summary", "Title", "x"}, 1);
        props({"remove", "a.doc", "summary", "Title"}, 1);
        EXPECT_TRUE(folder_.bytesOf("a.doc") == bytes);
    });
}

// What is there and no set is told as such, beside the sets that are.
TEST_F(Documents, WhatHasASetsNameAndIsNoneIsTold) {
    if (runsOn(System::wine)) GTEST_SKIP() << "it has its own view of damage";
    constexpr DWORD mode = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    for (bool const isStorage : {false, true}) {
        com::ComPtr<IStorage> root, storage;
        com::ComPtr<IStream> stream;
        ASSERT_EQ(StgCreateDocfile(OLESTR("odd.doc"), mode | STGM_CREATE, 0, root.put()), S_OK);
        OLECHAR const* const name = OLESTR("\5SummaryInformation");
        ASSERT_EQ(isStorage ? root->CreateStorage(name, mode, 0, 0, storage.put())
                            : root->CreateStream(name, mode, 0, 0, stream.put()),
                  S_OK);
        stream = {};
        storage = {};
        root = {};
        EXPECT_TRUE(contains(props({"list", "odd.doc", "a.doc"}, 1), "Company")) << isStorage;
        EXPECT_TRUE(contains(errors_, "SummaryInformation: what has its name is no property set"))
            << errors_;
    }
}

// A place that cannot be searched is reported, and the others are listed.
TEST_F(Documents, FoldersOfWhichAPartCannotBeReadAreListed) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "it makes no paths of this length";
    auto const nested = [](char const* first, int depth) {
        fs::path path = first;
        for (int i = 0; i < depth; ++i) path /= std::string(250, 'd');
        fs::create_directories(path);
        return path;
    };
    // Together they are longer than any path that the system opens.
    nested("inner", 12);
    fs::rename("inner", nested("outer", 12) / "inner");
    EXPECT_TRUE(contains(props({"list", "."}, 1), "a.doc\n"));
    EXPECT_TRUE(contains(errors_, "the folder cannot be read")) << errors_;
}

// So many that several threads read them; what is no document is passed over.
TEST_F(Documents, ManyFilesAreListedInOrder) {
    fs::create_directories("many/inner");
    constexpr int files = 200;
    for (int i = 0; i < files; ++i)
        fs::copy_file("a.doc", (i == 150 ? "many/inner/" : "many/") + std::to_string(1000 + i));
    std::ofstream("many/1099") << "no document";
    std::istringstream listed(props({"list", "--json", "many"}));
    std::string line;
    for (int i = 0; i < files; ++i) {
        // The one in the inner folder comes last.
        int const number = 1000 + (i == files - 1 ? 150 : i < 150 ? i : i + 1);
        if (number == 1099) continue;
        ASSERT_TRUE(std::getline(listed, line)) << i;
        EXPECT_TRUE(contains(line, std::to_string(number) + "\", \"error\": null")) << line;
        EXPECT_TRUE(contains(line, "\"PageCount\", \"type\": \"VT_I4\", \"value\": 7}")) << line;
    }
    EXPECT_FALSE(std::getline(listed, line));
    auto const linesOf = [&](Arguments const& names) {
        return std::ranges::count(props(names), '\n');
    };
    EXPECT_EQ(linesOf({"list", "many", "a.doc"}), files * linesOf({"list", "a.doc"}));
}

}  // namespace
}  // namespace velk::velkcom::test
