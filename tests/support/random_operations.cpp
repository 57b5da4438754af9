#include "support/random_operations.h"

#include <cstdlib>
#include <iomanip>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

namespace velk::test {
namespace {

unsigned numberFrom(char const* variable, unsigned otherwise) {
    char const* const text = std::getenv(variable);
    return text == nullptr ? otherwise : static_cast<unsigned>(std::strtoul(text, nullptr, 10));
}

std::vector<Operation> draw(unsigned length, unsigned seed) {
    std::mt19937 random(seed);
    auto const number = [&] { return static_cast<unsigned>(random() % 10000); };
    std::vector<Operation> operations(length);
    for (auto& each : operations) each = {number(), number(), number(), number()};
    return operations;
}

/// What went wrong; empty when nothing did.
std::string mismatchOf(RunOperations const& run, std::vector<Operation> const& operations,
                       std::string& log) {
    log.clear();
    try {
        run(operations, log);
        return {};
    } catch (Mismatch const& mismatch) {
        return mismatch.what;
    }
}

/// Leaves out parts, big ones first, as long as it goes wrong without them.
void shorten(RunOperations const& run, std::vector<Operation>& operations) {
    constexpr int mostTries = 400;
    std::string log;
    int tries = 0;
    for (std::size_t part = operations.size() / 2; part > 0; part /= 2) {
        for (std::size_t at = 0; at + part <= operations.size() && tries < mostTries; ++tries) {
            auto fewer = operations;
            auto const begin = fewer.begin() + static_cast<std::ptrdiff_t>(at);
            fewer.erase(begin, begin + static_cast<std::ptrdiff_t>(part));
            if (mismatchOf(run, fewer, log).empty()) {
                at += part;
            } else {
                operations = fewer;
            }
        }
    }
}

}  // namespace

void expectModel(bool holds, std::string const& what) {
    if (!holds) throw Mismatch{what};
}

void expectCode(long got, long expected, std::string const& what) {
    std::ostringstream text;
    text << what << ": " << std::hex << static_cast<unsigned>(got) << " instead of "
         << static_cast<unsigned>(expected);
    expectModel(got == expected, text.str());
}

void searchOperations(unsigned rounds, unsigned length, RunOperations const& run) {
    unsigned const first = numberFrom("VELK_SEED", 1);
    unsigned const count = numberFrom("VELK_ROUNDS", rounds);
    for (unsigned seed = first; seed - first < count; ++seed) {
        auto operations = draw(length, seed);
        std::string log;
        if (mismatchOf(run, operations, log).empty()) continue;
        shorten(run, operations);
        auto const mismatch = mismatchOf(run, operations, log);
        FAIL() << mismatch << "\nVELK_SEED=" << seed << ", the operations:\n" << log;
    }
}

}  // namespace velk::test
