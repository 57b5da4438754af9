// A key belongs to a transaction of Windows only when it was opened in it, and
// the functions that register type libraries open their own.
#include "com/registration/registry_change.h"

namespace velk::com {

RegistryChange::RegistryChange(bool) {}

RegistryChange::~RegistryChange() = default;

void RegistryChange::commit() {}

bool RegistryChange::isWhole() noexcept {
    return false;
}

}  // namespace velk::com
