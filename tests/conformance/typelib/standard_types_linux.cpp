// Our library of the standard types against the one that Wine carries.

#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "typelib_printer.h"

namespace velk::test {
namespace {

// The compiler of descriptions stamps the library itself, and cannot write the
// names of a module's functions into it: ours have numbers, Wine's no names.
std::string comparedText(char const* file) {
    std::ostringstream out;
    std::ostringstream errors;
    EXPECT_EQ(tools::printTypeLibrary(file, out, errors), 0) << errors.str();
    std::string const text = out.str();
    static std::regex const entry(R"(, entry ([0-9]+|"#") of )");
    return std::regex_replace(text.substr(text.find("library stdole")), entry, ", entry of ");
}

TEST(StandardTypes, AreThoseOfWine) {
    std::string const wine = VELK_WINE_STANDARD_TYPES;
    if (wine.empty()) GTEST_SKIP() << "no Wine here";
    EXPECT_EQ(comparedText(VELK_STANDARD_TYPES_TLB), comparedText(wine.c_str()));
}

}  // namespace
}  // namespace velk::test
