#include <ktmw32.h>
#include <velk_transactions.h>

#include "com/error.h"
#include "com/registry_change.h"

namespace velk::com {
namespace {

// Written and deleted again within the transaction.
constexpr OLECHAR firstValue[] = OLESTR("velk::com::RegistryChange");

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
    // The hive is the transaction's own from the first write on, and what is
    // read before may not hold any more then. So it begins with one; who may
    // not write is told so where that matters.
    HKEY const hive = perUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
    LSTATUS const status = RegSetValueExW(hive, firstValue, 0, REG_NONE, nullptr, 0);
    if (status == ERROR_SUCCESS) RegDeleteValueW(hive, firstValue);
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
