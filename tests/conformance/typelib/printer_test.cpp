// The printed form of the test library against its approved text.

#include <algorithm>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "baselines.h"
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
    expectApproved("shapes", withHelpContext(withoutStamps(out.str())));
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
