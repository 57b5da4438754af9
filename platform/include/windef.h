/// Basic types and calling conventions of the published interfaces.
///
/// Widths follow the published ones: LONG and everything built on it has
/// 32 bits here as there, characters of text have 16.
#pragma once

#include <cstddef>
#include <cstdint>

#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define WINAPI
#define APIENTRY
#define CALLBACK
#define FAR
#define CONST const

#define EXTERN_C extern "C"
#define VELK_LAYER_EXPORT __attribute__((visibility("default")))
#define WINBASEAPI VELK_LAYER_EXPORT
#define WINADVAPI VELK_LAYER_EXPORT
#define WINOLEAPI EXTERN_C VELK_LAYER_EXPORT HRESULT STDAPICALLTYPE
#define WINOLEAPI_(type) EXTERN_C VELK_LAYER_EXPORT type STDAPICALLTYPE
#define WINOLEAUTAPI EXTERN_C VELK_LAYER_EXPORT HRESULT STDAPICALLTYPE
#define WINOLEAUTAPI_(type) EXTERN_C VELK_LAYER_EXPORT type STDAPICALLTYPE

using VOID = void;
using CHAR = char;
using UCHAR = unsigned char;
using BYTE = std::uint8_t;
using boolean = unsigned char;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = std::int32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using BOOL = std::int32_t;
using FLOAT = float;
using DOUBLE = double;
using INT64 = long long;
using UINT64 = unsigned long long;
using LONG64 = long long;
using ULONG64 = unsigned long long;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using DWORDLONG = unsigned long long;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;

/// One UTF-16 code unit.
using WCHAR = char16_t;
using OLECHAR = WCHAR;
using LPSTR = CHAR*;
using LPCSTR = CHAR const*;
using LPWSTR = WCHAR*;
using PWSTR = WCHAR*;
using LPCWSTR = WCHAR const*;
using PCWSTR = WCHAR const*;
using LPOLESTR = OLECHAR*;
using LPCOLESTR = OLECHAR const*;
#define OLESTR(text) u##text

using LPVOID = void*;
using PVOID = void*;
using LPCVOID = void const*;
using LPBYTE = BYTE*;
using PBYTE = BYTE*;
using LPDWORD = DWORD*;
using PDWORD = DWORD*;
using PLONG = LONG*;

using HANDLE = void*;
struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
using HMODULE = HINSTANCE;
struct HRSRC__;
using HRSRC = HRSRC__*;
using HGLOBAL = HANDLE;
using FARPROC = INT_PTR (*)();

using LCID = DWORD;
using LANGID = WORD;
using HRESULT = LONG;
using SCODE = LONG;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

#ifndef TRUE
#define TRUE 1
#define FALSE 0
#endif
#define MAX_PATH 260

#define MAKELANGID(primary, sub) (static_cast<WORD>((static_cast<WORD>(sub) << 10) | (primary)))
#define MAKELCID(language, sort) \
    (static_cast<DWORD>((static_cast<DWORD>(static_cast<WORD>(sort)) << 16) | (language)))
#define PRIMARYLANGID(language) (static_cast<WORD>((language)&0x3ff))
#define SUBLANGID(language) (static_cast<WORD>(static_cast<WORD>(language) >> 10))
#define LANGIDFROMLCID(lcid) (static_cast<WORD>(lcid))
#define LANG_NEUTRAL 0x00
#define LANG_ENGLISH 0x09
#define SUBLANG_NEUTRAL 0x00
#define SUBLANG_DEFAULT 0x01
#define SUBLANG_ENGLISH_US 0x01
#define LOCALE_INVARIANT 0x007fU
#define LOCALE_USER_DEFAULT 0x0400U
#define LOCALE_SYSTEM_DEFAULT 0x0800U

static_assert(sizeof(LONG) == 4 && sizeof(WCHAR) == 2 && sizeof(BOOL) == 4);
