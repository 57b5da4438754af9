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

/// Whether the running system has the difference `id` of
/// tests/data/differences.tsv: its column there holds another text than "=".
/// Throws std::out_of_range where there is no such row.
bool hasDifference(std::string_view id);

/// Runs `assertions`, at least one of which fails where the running system has
/// the difference `id`.
///
/// Elsewhere they count as if they stood in the test itself. Where it has it
/// their failures are taken as expected: they are counted, and one line tells
/// it. When all of them pass there, the difference is gone, and the test fails
/// until the row says so.
///
/// The failures of other threads than the caller's are never expected. Not
/// for assertions that crash or hang: those cannot be run at all.
void expectDifference(std::string_view id, std::function<void()> const& assertions);

/// As above for the difference of one `system`.
void expectDifference(System system, std::string_view reason,
                      std::function<void()> const& assertions);

/// Counts the difference `id`, which a caller has met by itself. Fails the test
/// where the running system is not known to have it.
void countDifference(std::string_view id);

/// How many blocks differed as expected, in this process so far.
int expectedDifferences() noexcept;

}  // namespace velk::test
