/// The registry: a tree of keys with named, typed values.
///
/// Names are compared without regard to case. Every function may be called
/// by several threads and processes at once.
#pragma once

#include "windef.h"
#include "winerror.h"

struct HKEY__;
using HKEY = HKEY__*;
using PHKEY = HKEY*;
using REGSAM = DWORD;
using LSTATUS = LONG;
struct SECURITY_ATTRIBUTES;

#define HKEY_CLASSES_ROOT (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000000U)))
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000001U)))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000002U)))
#define HKEY_USERS (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000003U)))
#define HKEY_CURRENT_CONFIG (reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0x80000005U)))

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_ENUMERATE_SUB_KEYS 0x0008
#define KEY_NOTIFY 0x0010
#define KEY_CREATE_LINK 0x0020
#define KEY_WOW64_64KEY 0x0100
#define KEY_WOW64_32KEY 0x0200
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F
#define DELETE 0x00010000
#define MAXIMUM_ALLOWED 0x02000000

#define REG_NONE 0
#define REG_SZ 1
#define REG_EXPAND_SZ 2
#define REG_BINARY 3
#define REG_DWORD 4
#define REG_MULTI_SZ 7
#define REG_QWORD 11
#define REG_OPTION_NON_VOLATILE 0
#define REG_CREATED_NEW_KEY 1
#define REG_OPENED_EXISTING_KEY 2
#define RRF_RT_REG_SZ 0x00000002

EXTERN_C WINADVAPI LSTATUS WINAPI RegOpenKeyExW(HKEY key, LPCWSTR name, DWORD options,
                                                REGSAM access, PHKEY result);
EXTERN_C WINADVAPI LSTATUS WINAPI RegCreateKeyExW(HKEY key, LPCWSTR name, DWORD reserved,
                                                  LPWSTR keyClass, DWORD options, REGSAM access,
                                                  SECURITY_ATTRIBUTES const* security, PHKEY result,
                                                  LPDWORD disposition);
EXTERN_C WINADVAPI LSTATUS WINAPI RegCloseKey(HKEY key);
EXTERN_C WINADVAPI LSTATUS WINAPI RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type,
                                                 BYTE const* data, DWORD size);
EXTERN_C WINADVAPI LSTATUS WINAPI RegQueryValueExW(HKEY key, LPCWSTR name, LPDWORD reserved,
                                                   LPDWORD type, LPBYTE data, LPDWORD size);
/// Texts alone: `flags` is RRF_RT_REG_SZ. Expandable ones are expanded.
EXTERN_C WINADVAPI LSTATUS WINAPI RegGetValueW(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD flags,
                                               LPDWORD type, PVOID data, LPDWORD size);
EXTERN_C WINADVAPI LSTATUS WINAPI RegDeleteValueW(HKEY key, LPCWSTR name);
EXTERN_C WINADVAPI LSTATUS WINAPI RegDeleteKeyW(HKEY key, LPCWSTR name);
EXTERN_C WINADVAPI LSTATUS WINAPI RegDeleteTreeW(HKEY key, LPCWSTR name);
EXTERN_C WINADVAPI LSTATUS WINAPI RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name,
                                                LPDWORD capacity, LPDWORD reserved, LPWSTR keyClass,
                                                LPDWORD classCapacity, FILETIME* written);
EXTERN_C WINADVAPI LSTATUS WINAPI RegEnumValueW(HKEY key, DWORD index, LPWSTR name,
                                                LPDWORD capacity, LPDWORD reserved, LPDWORD type,
                                                LPBYTE data, LPDWORD size);
EXTERN_C WINADVAPI LSTATUS WINAPI RegQueryInfoKeyW(HKEY key, LPWSTR keyClass, LPDWORD classCapacity,
                                                   LPDWORD reserved, LPDWORD subKeys,
                                                   LPDWORD longestSubKey, LPDWORD longestClass,
                                                   LPDWORD values, LPDWORD longestValueName,
                                                   LPDWORD longestValue, LPDWORD security,
                                                   FILETIME* written);
