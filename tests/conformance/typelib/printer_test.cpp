// The printed form of the test library against its approved text.

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

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
    std::string const printed = withoutStamps(out.str());
    std::filesystem::path const received = VELK_RECEIVED_BASELINE;
    std::ofstream(received) << printed;
    std::ifstream stream(VELK_APPROVED_BASELINE);
    ASSERT_TRUE(stream.good()) << "no approved text; renew it with scripts/approve-baselines";
    std::string const approved{std::istreambuf_iterator<char>(stream), {}};
    EXPECT_EQ(printed, approved) << "printed text is in " << received;
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
