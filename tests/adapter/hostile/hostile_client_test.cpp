// Programs of the hostile client: those that found something once, and drawn ones.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>

#include "hostile/client.h"
#include "support/data_table.h"
#include "support/expected_difference.h"

namespace {

using namespace velk::test;
using namespace velk::test::hostile;

constexpr char digits[] = "0123456789abcdef";

Program programOf(std::string const& text) {
    Program program;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        program.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    return program;
}

std::string textOf(Program const& program) {
    std::string text;
    for (auto const byte : program) text += {digits[byte / 16], digits[byte % 16]};
    return text;
}

unsigned numberFrom(char const* variable, unsigned otherwise) {
    char const* const text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::stoul(text)) : otherwise;
}

TEST(HostileClient, LeavesNothingBehind) {
    // Records are less than published there.
    Client client(!runsOn(System::wine));
    expectTable("bridge/hostile_programs.tsv", [&](DataRow const& row) {
        std::string const left = client.run(programOf(row["program"]));
        return left.empty() ? "nothing" : left;
    });
    unsigned const seed = numberFrom("VELK_SEED", 1);
    unsigned const rounds = numberFrom("VELK_ROUNDS", 300);
    for (unsigned round = 0; round < rounds; ++round) {
        // A program that ends the process is found by its seed.
        if (std::getenv("VELK_ROUNDS")) std::fprintf(stderr, "VELK_SEED=%u\n", seed + round);
        Program const program = drawn(seed + round);
        std::string const left = client.run(program);
        ASSERT_EQ(left, "") << "seed " << seed + round << ": " << textOf(program);
    }
}

}  // namespace
