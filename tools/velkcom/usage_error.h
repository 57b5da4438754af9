/// A command line that cannot be carried out as it stands.
#pragma once

#include <stdexcept>

namespace velk::velkcom {

/// Mistake in the arguments; the program ends with exit code 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

}  // namespace velk::velkcom
