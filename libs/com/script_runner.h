/// Carries out a registry script that has been read.
#pragma once

#include "com/registry.h"
#include "com/script.h"

namespace velk::com {

/// Writes what the script describes. Throws Error with the path of the key at
/// the first refused operation; what was written before it stays.
void installScript(Script const& script, Registry& registry, bool perUser);

/// Takes back what installScript wrote: values are removed, a key marked
/// "NoRemove" stays, one marked "ForceRemove" goes with everything below it,
/// any other goes after the keys below it were handled, provided none is left.
/// What does not exist is no failure. Throws Error as installScript does.
void removeScript(Script const& script, Registry& registry, bool perUser);

}  // namespace velk::com
