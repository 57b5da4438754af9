#pragma once

#include "native_object.h"

namespace hostscript {

/// Uses the objects of the sample server: results by reference, records,
/// arrays, failures. `adapter` is the host's "qxttools.comadapter".
void tourSample(ScriptObject& adapter);

/// Uses objects of the system; tells when it has none.
void tourSystem(ScriptObject& adapter);

}  // namespace hostscript
