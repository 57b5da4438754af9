/// Functions of COM: apartments, memory, identifiers, class objects.
#pragma once

#include "coml2api.h"
#include "objidl.h"
#include "unknwn.h"
#include "winbase.h"

enum COINIT {
    COINIT_MULTITHREADED = 0x0,
    COINIT_APARTMENTTHREADED = 0x2,
    COINIT_DISABLE_OLE1DDE = 0x4,
    COINIT_SPEED_OVER_MEMORY = 0x8
};

WINOLEAPI CoInitializeEx(LPVOID reserved, DWORD flags);
WINOLEAPI_(void) CoUninitialize();

WINOLEAPI_(LPVOID) CoTaskMemAlloc(SIZE_T size);
WINOLEAPI_(void) CoTaskMemFree(LPVOID block);

WINOLEAPI CoCreateGuid(GUID* id);
WINOLEAPI CLSIDFromString(LPCOLESTR text, CLSID* id);
WINOLEAPI IIDFromString(LPCOLESTR text, IID* id);
WINOLEAPI_(INT) StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity);
WINOLEAPI CLSIDFromProgID(LPCOLESTR progId, CLSID* id);

WINOLEAPI CoGetClassObject(REFCLSID id, DWORD context, LPVOID server, REFIID riid, LPVOID* object);
WINOLEAPI CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID riid,
                           LPVOID* object);
WINOLEAPI_(void) CoFreeUnusedLibraries();

// The entry points that a class module exports.
STDAPI DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object);
STDAPI DllCanUnloadNow();

// Property sets, which rest on what stands above.
#include "propidl.h"
