/// What a test run may not leave behind.
#pragma once

#include <functional>
#include <string>

namespace velk::test {

/// Adds a check that test_main makes after the last test: `count` gives how
/// many things called `what` are still alive, and anything but 0 fails the
/// run. For static initialisers of test files that link more than the layer.
/// Returns true, so that a static bool can be initialised with it.
bool addLeakCheck(std::string what, std::function<long long()> count);

/// Adds the checks of the native side, where this system can count them.
void addNativeLeakChecks();

/// Adds something to do after the last test and before the counts are read,
/// such as ending a runtime that holds on to things. Returns true.
bool addTearDown(std::function<void()> action);

/// Does what was added so.
void tearDown();

/// What the checks find alive now, "2 BSTRs, 1 records"; empty for nothing.
std::string thingsAlive();

}  // namespace velk::test
