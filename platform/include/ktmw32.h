/// Transactions: several changes of the registry as one.
///
/// A thread works in a transaction from VelkSetThreadTransaction
/// (velk_transactions.h) until the transaction is committed or rolled back.
/// Meanwhile everything that the thread writes to the registry, functions that
/// register type libraries included, belongs to it: the thread itself sees it,
/// nobody else does. CommitTransaction changes each hive that was written to in
/// one piece; a process that ends before leaves the hives as they were. From
/// its first write to a hive on, a transaction keeps other writers of that hive
/// waiting, so it should be short.
///
/// A transaction belongs to the thread that makes it: on others, and in a forked
/// child, its handle is of no use.
#pragma once

#include "guiddef.h"
#include "windef.h"
#include "winreg.h"

#ifndef INVALID_HANDLE_VALUE
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))
#endif

/// A new transaction. Everything but `description` must be null or 0, the
/// timeout included; the description is not kept. INVALID_HANDLE_VALUE on
/// failure, with GetLastError: ERROR_INVALID_PARAMETER, ERROR_NOT_ENOUGH_MEMORY.
EXTERN_C WINBASEAPI HANDLE WINAPI CreateTransaction(SECURITY_ATTRIBUTES* security, GUID* id,
                                                    DWORD options, DWORD isolationLevel,
                                                    DWORD isolationFlags, DWORD timeout,
                                                    LPWSTR description);

/// Makes the changes, hive by hive. FALSE on failure, with GetLastError as the
/// registry gives it; the hive that failed is then as it was, and so is the one
/// after it. Either way the transaction has ended and is no thread's any more.
EXTERN_C WINBASEAPI BOOL WINAPI CommitTransaction(HANDLE transaction);

/// Drops the changes. FALSE with ERROR_INVALID_HANDLE for what is no transaction,
/// or with ERROR_TRANSACTION_NOT_ACTIVE when it has ended.
EXTERN_C WINBASEAPI BOOL WINAPI RollbackTransaction(HANDLE transaction);

/// Lets go of a transaction; one that has not ended is rolled back.
EXTERN_C WINBASEAPI BOOL WINAPI CloseHandle(HANDLE transaction);
