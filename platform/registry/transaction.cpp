#include <ktmw32.h>
#include <velk_transactions.h>

#include "platform/registry/hive.h"
#include "platform/system/handle_table.h"
#include "platform/system/immortal.h"

namespace velk::platform::registry {
namespace {

struct ThreadTransaction {
    Transaction* transaction = nullptr;
    HANDLE handle = nullptr;
};
constinit thread_local ThreadTransaction ofThisThread;

HandleTable<Transaction>& transactions() {
    static Immortal<HandleTable<Transaction>> all;
    return *all;
}

std::shared_ptr<Transaction> transactionOf(HANDLE handle) {
    auto transaction = transactions().find(handle);
    require(transaction != nullptr && transaction->isOfThisThread(), ERROR_INVALID_HANDLE);
    return transaction;
}

}  // namespace

Transaction* Transaction::ofThread() {
    return ofThisThread.transaction;
}

HiveChange* Transaction::change(HiveName name, bool toWrite) {
    auto& change = changes_[name == HiveName::machine ? 1 : 0];
    if (change == nullptr && toWrite) change = std::make_unique<HiveChange>(name);
    return change.get();
}

void Transaction::end(bool commits) {
    require(!hasEnded_, ERROR_TRANSACTION_NOT_ACTIVE);
    hasEnded_ = true;
    if (ofThread() == this) ofThisThread = {};
    auto const ending = std::move(changes_);
    for (auto const& change : ending) {
        if (commits && change != nullptr) change->commit();
    }
}

}  // namespace velk::platform::registry

using namespace velk::platform;
using namespace velk::platform::registry;

HANDLE CreateTransaction(SECURITY_ATTRIBUTES* security, GUID* id, DWORD options,
                         DWORD isolationLevel, DWORD isolationFlags, DWORD timeout, LPWSTR) {
    return orLastError(INVALID_HANDLE_VALUE, [&] {
        DWORD const numbers = options | isolationLevel | isolationFlags | timeout;
        require(security == nullptr && id == nullptr && numbers == 0, ERROR_INVALID_PARAMETER);
        return transactions().add(std::make_shared<Transaction>());
    });
}

BOOL CommitTransaction(HANDLE transaction) {
    return orLastError(FALSE, [&] { return transactionOf(transaction)->end(true), TRUE; });
}

BOOL RollbackTransaction(HANDLE transaction) {
    return orLastError(FALSE, [&] { return transactionOf(transaction)->end(false), TRUE; });
}

BOOL CloseHandle(HANDLE transaction) {
    return orLastError(FALSE, [&] {
        auto const closed = transactionOf(transaction);
        transactions().remove(transaction);
        if (!closed->hasEnded()) closed->end(false);
        return TRUE;
    });
}

BOOL VelkSetThreadTransaction(HANDLE transaction) {
    return orLastError(FALSE, [&] {
        auto* const entered = transaction == nullptr ? nullptr : transactionOf(transaction).get();
        require(entered == nullptr || !entered->hasEnded(), ERROR_TRANSACTION_NOT_ACTIVE);
        ofThisThread = {entered, transaction};
        return TRUE;
    });
}

HANDLE VelkThreadTransaction() {
    return ofThisThread.handle;
}

LSTATUS VelkTakeHive(HKEY hive) {
    return answer([&] {
        auto* const transaction = Transaction::ofThread();
        require(transaction != nullptr, ERROR_INVALID_HANDLE);
        require(hive == HKEY_LOCAL_MACHINE || hive == HKEY_CURRENT_USER, ERROR_INVALID_PARAMETER);
        transaction->change(hive == HKEY_LOCAL_MACHINE ? HiveName::machine : HiveName::user, true);
    });
}
