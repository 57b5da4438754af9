/// Known differences of one system from the published behaviour.
#pragma once

#include <functional>
#include <string_view>

namespace velk::test {

/// Who answers the published functions in this process.
enum class System { ownLayer, wine, windows };

/// The system that this process runs on.
System runningSystem() noexcept;

/// Runs `assertions`, of which `system` is known to fail at least one.
///
/// On every other system they count as if they stood in the test itself. On
/// `system` their failures are taken as expected: they are counted, and one
/// line tells `reason`. When all of them pass there, the difference is gone,
/// and the test fails until the mark is taken off.
///
/// The failures of other threads than the caller's are never expected. Not
/// for assertions that crash or hang: those cannot be run at all.
void expectDifference(System system, std::string_view reason,
                      std::function<void()> const& assertions);

/// How many blocks differed as expected, in this process so far.
int expectedDifferences() noexcept;

}  // namespace velk::test
