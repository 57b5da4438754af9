#include <cstdio>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/leaks.h"

namespace velk::test {
namespace {

struct LeakCheck {
    std::string what;
    std::function<long long()> count;
};

// Function-local, because static initialisers of other files add to them.
std::vector<LeakCheck>& leakChecks() {
    static std::vector<LeakCheck> checks;
    return checks;
}

std::vector<std::function<void()>>& tearDowns() {
    static std::vector<std::function<void()>> actions;
    return actions;
}

bool anythingLeft() {
    bool left = false;
    for (auto const& check : leakChecks()) {
        long long const alive = check.count();
        if (alive == 0) continue;
        std::printf("[  LEAK    ] %lld %s still alive after the last test\n", alive,
                    check.what.c_str());
        left = true;
    }
    return left;
}

}  // namespace

bool addLeakCheck(std::string what, std::function<long long()> count) {
    leakChecks().push_back({std::move(what), std::move(count)});
    return true;
}

bool addTearDown(std::function<void()> action) {
    tearDowns().push_back(std::move(action));
    return true;
}

}  // namespace velk::test

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    velk::test::addNativeLeakChecks();
    int const result = RUN_ALL_TESTS();
    for (auto const& action : velk::test::tearDowns()) action();
    return velk::test::anythingLeft() ? 1 : result;
}
