/// Known differences of one system from the published behaviour.
#pragma once

#include <functional>
#include <string_view>

namespace velk::test {

/// Who answers the published functions in this process. `wine` stands for its
/// versions before 10, `wine8`, and from 10 on, `wine10`.
enum class System : unsigned {
    ownLayer = 1,
    wine8 = 2,
    wine10 = 4,
    wine = wine8 | wine10,
    windows = 8
};

/// The system that this process runs on: one of them, never `wine`.
System runningSystem() noexcept;

/// Whether it is that one, or one of those that it stands for.
bool runsOn(System system) noexcept;

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
