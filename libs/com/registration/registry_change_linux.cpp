#include <ktmw32.h>
#include <velk_transactions.h>

#include "com/error.h"
#include "com/registration/registry_change.h"

namespace velk::com {
namespace {

[[noreturn]] void throwFailure(char const* what) {
    DWORD const error = GetLastError();
    throwIfError(static_cast<LSTATUS>(error), what);
    throw Error(E_FAIL, what);
}

}  // namespace

RegistryChange::RegistryChange(bool perUser) {
    if (VelkThreadTransaction() != nullptr) return;
    HANDLE const made = CreateTransaction(nullptr, nullptr, 0, 0, 0, 0, nullptr);
    if (made == INVALID_HANDLE_VALUE) throwFailure("cannot begin a change of the registry");
    transaction_ = made;
    VelkSetThreadTransaction(made);
    // What is read before the first write shall hold then. Who may not write is
    // told so where that matters.
    LSTATUS const status = VelkTakeHive(perUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE);
    if (status == ERROR_SUCCESS || status == ERROR_ACCESS_DENIED) return;
    CloseHandle(made);
    throwIfError(status, "cannot begin a change of the registry");
}

RegistryChange::~RegistryChange() {
    if (transaction_ != nullptr) CloseHandle(transaction_);
}

void RegistryChange::commit() {
    if (transaction_ == nullptr) return;
    if (!CommitTransaction(transaction_)) throwFailure("cannot change the registry");
}

bool RegistryChange::isWhole() noexcept {
    return true;
}

}  // namespace velk::com
