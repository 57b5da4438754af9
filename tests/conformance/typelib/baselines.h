/// Printed texts that were approved once.
#pragma once

#include <string>

namespace velk::test {

/// Fails the running test unless `printed` is the approved text of that name.
/// Keeps what was printed for scripts/approve-baselines.
void expectApproved(std::string const& name, std::string const& printed);

}  // namespace velk::test
