// The printed form of the test library against its approved text.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "support/data_table.h"
#include "support/expected_difference.h"
#include "typelib_printer.h"

namespace velk::test {
namespace {

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
    expectDifference(System::wine, "a library has no help context", [&] {
        EXPECT_NE(libraryLine.find(context + next), std::string::npos) << libraryLine;
    });
    bool const isLost = libraryLine.find(context) == std::string::npos;
    if (isLost) text.insert(std::min(text.find(next), text.size()), context);
    return text;
}

TEST(Printer, PrintsTheApprovedText) {
    std::ostringstream out;
    std::ostringstream errors;
    ASSERT_EQ(tools::printTypeLibrary(VELK_SHAPES_TLB, out, errors), 0);
    EXPECT_EQ(errors.str(), "");
    expectApproved("typelib/shapes.txt", withHelpContext(withoutStamps(out.str())));
}

// Names and texts that a terminal would take for orders.
TEST(Printer, PrintsNoControlCharacters) {
    std::ifstream stream(std::filesystem::path(VELK_SHAPES_TLB), std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(stream), {}};
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
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(tools::printTypeLibrary(file, out, errors), 0) << errors.str();
    std::filesystem::remove(file);
    std::string const text = out.str();
    EXPECT_NE(text.find("T?[2m("), std::string::npos);
    EXPECT_NE(text.find("library S????s {"), std::string::npos);
    EXPECT_NE(text.find("\"A\\x1b[m\""), std::string::npos);
    EXPECT_TRUE(std::ranges::all_of(
        text, [](unsigned char c) { return c == '\n' || (c >= 0x20 && c != 0x7f); }));
}

TEST(Printer, SaysWhyAFileCannotBePrinted) {
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(tools::printTypeLibrary("/no/such/file.tlb", out, errors), 1);
    EXPECT_EQ(out.str(), "");
    EXPECT_NE(errors.str().find("0x80029c4a"), std::string::npos);
}

}  // namespace
}  // namespace velk::test
