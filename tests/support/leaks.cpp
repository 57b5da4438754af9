#include "support/leaks.h"

#include <utility>
#include <vector>

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

}  // namespace

bool addLeakCheck(std::string what, std::function<long long()> count) {
    leakChecks().push_back({std::move(what), std::move(count)});
    return true;
}

bool addTearDown(std::function<void()> action) {
    tearDowns().push_back(std::move(action));
    return true;
}

void tearDown() {
    for (auto const& action : tearDowns()) action();
}

std::string thingsAlive() {
    std::string text;
    for (auto const& check : leakChecks()) {
        long long const alive = check.count();
        if (alive == 0) continue;
        text += (text.empty() ? "" : ", ") + std::to_string(alive) + " " + check.what;
    }
    return text;
}

}  // namespace velk::test
