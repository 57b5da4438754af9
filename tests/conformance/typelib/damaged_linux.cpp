// Libraries that are cut short or changed are printed, or refused with a code.
// That is a promise of our layer: others may end the process instead.

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "typelib_printer.h"

namespace velk::test {
namespace {

std::vector<char> shapesBytes() {
    std::ifstream stream(std::filesystem::path(VELK_SHAPES_TLB), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

class DamagedLibrary : public testing::Test {
  protected:
    void TearDown() override { std::filesystem::remove(file_); }

    // What printing these bytes, which asks for everything, says of them: their
    // code, or nothing.
    std::string refusal(std::vector<char> const& bytes) {
        std::ofstream(file_, std::ios::binary).write(bytes.data(), std::ssize(bytes));
        std::ostringstream out;
        std::ostringstream errors;
        int const result = velkcom::printTypeLibrary(file_, out, errors);
        std::string const line = errors.str();
        EXPECT_EQ(result != 0, !line.empty());
        return result == 0 ? "" : line.substr(line.rfind("0x"), 10);
    }

  private:
    std::filesystem::path file_ = std::filesystem::temp_directory_path() / "velk_damaged.tlb";
};

// TYPE_E_INVDATAREAD, TYPE_E_UNSUPFORMAT, TYPE_E_CANTLOADLIBRARY.
constexpr char const* unsupported = "0x80028019";
bool isExpected(std::string const& refusal) {
    return refusal == "0x80028018" || refusal == unsupported || refusal == "0x80029c4a";
}

TEST_F(DamagedLibrary, CutAnywhereGivesACode) {
    auto const bytes = shapesBytes();
    ASSERT_GT(bytes.size(), 1000U);
    for (std::size_t length = 0; length < bytes.size(); length += 61) {
        auto const end = bytes.begin() + static_cast<std::ptrdiff_t>(length);
        auto const result = refusal({bytes.begin(), end});
        EXPECT_TRUE(isExpected(result)) << length << ": " << result;
    }
}

TEST_F(DamagedLibrary, FlippedBitsGiveACodeOrALibrary) {
    auto const bytes = shapesBytes();
    int refused = 0;
    // A fixed sequence, so that a finding can be repeated.
    std::uint32_t state = 1;
    for (int round = 0; round < 300; ++round) {
        auto damaged = bytes;
        for (int flip = 0; flip < 4; ++flip) {
            state = state * 1664525U + 1013904223U;
            char& byte = damaged[(state >> 8) % damaged.size()];
            byte = static_cast<char>(byte ^ 1 << (state >> 5 & 7));
        }
        auto const result = refusal(damaged);
        EXPECT_TRUE(result.empty() || isExpected(result)) << round << ": " << result;
        refused += !result.empty();
    }
    EXPECT_GT(refused, 0);
}

TEST_F(DamagedLibrary, OfTheOlderFormatIsNotSupported) {
    auto bytes = shapesBytes();
    std::copy_n("SLTG", 4, bytes.begin());
    EXPECT_EQ(refusal(bytes), unsupported);
}

}  // namespace
}  // namespace velk::test
