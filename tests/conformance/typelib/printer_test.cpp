// The printed form of the test library against its approved text.

#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "baselines.h"
#include "typelib_printer.h"

namespace velk::test {
namespace {

// The compiler of descriptions stamps the time into the library.
std::string withoutStamps(std::string const& text) {
    static std::regex const stamp(R"(, custom\(de77ba6[0-9a-f]-[^"\n]*?("[^"\n]*")?\)(?=[,\]]))");
    return std::regex_replace(text, stamp, "");
}

TEST(Printer, PrintsTheApprovedText) {
    std::ostringstream out;
    std::ostringstream errors;
    ASSERT_EQ(tools::printTypeLibrary(VELK_SHAPES_TLB, out, errors), 0);
    EXPECT_EQ(errors.str(), "");
    expectApproved("shapes", withoutStamps(out.str()));
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
