// Libraries as texts: that of the tests, that of the standard types, and those
// of others where a folder with some is given.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/data_table.h"
#include "support/expected_difference.h"
#include "typelib_printer.h"

namespace velk::test {
namespace {

std::string contentOf(std::filesystem::path const& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

// The text of a library, all of which can be read.
std::string printed(std::filesystem::path const& file) {
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(velkcom::printTypeLibrary(file, out, errors), 0);
    EXPECT_EQ(errors.str(), "");
    EXPECT_EQ(out.str().find("unreadable"), std::string::npos) << file;
    return out.str();
}

// The compiler of descriptions stamps the time into the library.
std::string withoutStamps(std::string const& text) {
    static std::regex const stamp(R"(, custom\(de77ba6[0-9a-f]-[^"\n]*?("[^"\n]*")?\)(?=[,\]]))");
    return std::regex_replace(text, stamp, "");
}

// Adds what a system that loses the help context of a library leaves out, so
// that the rest of the text is compared there too.
std::string withHelpContext(std::string text) {
    std::string const context = ", helpcontext(77)";
    std::string const next = ", helpfile(";
    std::string const libraryLine = text.substr(0, text.find('\n'));
    expectDifference("library-help-context", [&] {
        EXPECT_NE(libraryLine.find(context + next), std::string::npos) << libraryLine;
    });
    bool const isLost = libraryLine.find(context) == std::string::npos;
    if (isLost) text.insert(std::min(text.find(next), text.size()), context);
    return text;
}

TEST(Printer, PrintsTheApprovedText) {
    expectApproved("typelib/shapes.txt", withHelpContext(withoutStamps(printed(VELK_SHAPES_TLB))));
}

// A library for systems of 32 bits says the same to a caller of 64: sizes,
// offsets and places in vtables are those of this process.
TEST(Printer, PrintsALibraryFor32BitsAlike) {
    std::string text = printed(VELK_SHAPES_TLB_32);
    auto const at = text.find("win32");
    ASSERT_NE(at, std::string::npos);
    text.replace(at, 5, "win64");
    expectDifference("library-of-32-bits", [&] {
        EXPECT_EQ(withoutStamps(text), withoutStamps(printed(VELK_SHAPES_TLB)));
    });
}

// Names and texts that a terminal would take for orders.
TEST(Printer, PrintsNoControlCharacters) {
    std::string bytes = contentOf(VELK_SHAPES_TLB);
    for (auto const& [harmless, harmful] :
         {std::pair<std::string, std::string>{"Title", "T\x1b[2m"},
          {"Shapes", "S\n\x1b\x7f\rs"},
          {"Adds", "A\x1b[m"}}) {
        auto at = bytes.find(harmless);
        ASSERT_NE(at, std::string::npos) << harmless;
        for (; at != std::string::npos; at = bytes.find(harmless, at + 1)) {
            bytes.replace(at, harmful.size(), harmful);
        }
    }
    auto const file = std::filesystem::temp_directory_path() / "velk_controls.tlb";
    std::ofstream(file, std::ios::binary) << bytes;
    std::string const text = printed(file);
    std::filesystem::remove(file);
    EXPECT_NE(text.find("T?[2m("), std::string::npos);
    EXPECT_NE(text.find("library S????s {"), std::string::npos);
    EXPECT_NE(text.find("\"A\\x1b[m\""), std::string::npos);
    EXPECT_TRUE(std::ranges::all_of(
        text, [](unsigned char c) { return c == '\n' || (c >= 0x20 && c != 0x7f); }));
}

TEST(Printer, SaysWhyAFileCannotBePrinted) {
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(velkcom::printTypeLibrary("/no/such/file.tlb", out, errors), 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(errors.str().find("0x80029c4a"), std::string::npos);
}

// The compiler of descriptions stamps the library itself, and cannot write the
// names of a module's functions into it: ours have numbers, Wine's no names.
std::string standardTypes(std::string const& file) {
    std::string const text = printed(file);
    static std::regex const entry(R"(, entry ([0-9]+|"\\?.") of )");
    return std::regex_replace(text.substr(text.find("library stdole")), entry, ", entry of ");
}

// By their places other libraries name those without an identifier.
TEST(StandardTypes, AreThePublishedOnes) {
    if (!*VELK_STANDARD_TYPES_TLB) GTEST_SKIP() << "the system has its own";
    expectApproved("typelib/stdole.txt", standardTypes(VELK_STANDARD_TYPES_TLB));
}

TEST(StandardTypes, AreThoseOfWine) {
    std::string const wine = VELK_WINE_STANDARD_TYPES;
    if (wine.empty()) GTEST_SKIP() << "no layer of ours, or no Wine to compare it with";
    EXPECT_EQ(standardTypes(VELK_STANDARD_TYPES_TLB), standardTypes(wine));
}

std::vector<std::filesystem::path> filesIn(char const* variable) {
    std::vector<std::filesystem::path> files;
    char const* const folder = std::getenv(variable);
    if (!folder) return files;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    return files;
}

// A dump that is independent of us lists every name in the library's table.
std::vector<std::string> namesIn(std::filesystem::path const& dump) {
    std::string const text = contentOf(dump);
    std::regex const entry(R"(name = "([A-Za-z_][A-Za-z0-9_]*)\")");
    std::vector<std::string> names;
    for (std::sregex_iterator at(text.begin(), text.end(), entry), end; at != end; ++at) {
        names.push_back((*at)[1]);
    }
    return names;
}

TEST(Samples, AreReadWithEveryNameOfTheirDumps) {
    auto const files = filesIn("VELK_TYPELIBS");
    if (files.empty()) GTEST_SKIP() << "VELK_TYPELIBS names no folder with libraries";
    int compared = 0;
    for (auto const& file : files) {
        if (file.extension() != ".tlb") continue;
        auto const dump =
            file.parent_path() / "expected" / (file.filename().string() + ".winedump.txt");
        std::string const text = printed(file);
        EXPECT_EQ(text.find("<0x"), std::string::npos) << file << " refers to nothing";
        auto const names = namesIn(dump);
        EXPECT_FALSE(names.empty()) << dump;
        for (auto const& name : names) {
            EXPECT_NE(text.find(name), std::string::npos) << file << " lacks " << name;
        }
        expectDifference("library-of-32-bits",
                         [&] { expectApproved("typelib/" + file.stem().string() + ".txt", text); });
        ++compared;
    }
    EXPECT_GT(compared, 0);
}

TEST(Samples, InModulesAreReadWhole) {
    auto const files = filesIn("VELK_WINE_MODULES");
    if (files.empty()) GTEST_SKIP() << "VELK_WINE_MODULES names no folder with modules";
    int libraries = 0;
    for (auto const& file : files) {
        ComPtr<ITypeLib> library;
        HRESULT const result =
            LoadTypeLibEx(file.string<OLECHAR>().c_str(), REGKIND_NONE, library.put());
        EXPECT_TRUE(result == S_OK || result == TYPE_E_CANTLOADLIBRARY) << file;
        if (FAILED(result)) continue;
        EXPECT_GT(library->GetTypeInfoCount(), 0U) << file;
        EXPECT_EQ(printed(file).find("<0x"), std::string::npos) << file << " refers to nothing";
        ++libraries;
    }
    EXPECT_GT(libraries, 0);
}

}  // namespace
}  // namespace velk::test
