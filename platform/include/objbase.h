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

enum APTTYPE {
    APTTYPE_CURRENT = -1,
    APTTYPE_STA = 0,
    APTTYPE_MTA = 1,
    APTTYPE_NA = 2,
    APTTYPE_MAINSTA = 3
};
enum APTTYPEQUALIFIER { APTTYPEQUALIFIER_NONE = 0, APTTYPEQUALIFIER_IMPLICIT_MTA = 1 };

WINOLEAPI CoInitialize(LPVOID reserved);
WINOLEAPI CoInitializeEx(LPVOID reserved, DWORD flags);
WINOLEAPI_(void) CoUninitialize();
WINOLEAPI CoGetApartmentType(APTTYPE* type, APTTYPEQUALIFIER* qualifier);

WINOLEAPI_(LPVOID) CoTaskMemAlloc(SIZE_T size);
WINOLEAPI_(LPVOID) CoTaskMemRealloc(LPVOID block, SIZE_T size);
WINOLEAPI_(void) CoTaskMemFree(LPVOID block);

WINOLEAPI CoCreateGuid(GUID* id);
WINOLEAPI CLSIDFromString(LPCOLESTR text, CLSID* id);
WINOLEAPI IIDFromString(LPCOLESTR text, IID* id);
WINOLEAPI StringFromCLSID(REFCLSID id, LPOLESTR* text);
WINOLEAPI StringFromIID(REFIID id, LPOLESTR* text);
WINOLEAPI_(INT) StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity);
WINOLEAPI CLSIDFromProgID(LPCOLESTR progId, CLSID* id);
WINOLEAPI ProgIDFromCLSID(REFCLSID id, LPOLESTR* progId);

WINOLEAPI CoGetClassObject(REFCLSID id, DWORD context, LPVOID server, REFIID riid, LPVOID* object);
WINOLEAPI CoCreateInstance(REFCLSID id, IUnknown* outer, DWORD context, REFIID riid,
                           LPVOID* object);
WINOLEAPI_(void) CoFreeUnusedLibraries();
WINOLEAPI_(void) CoFreeUnusedLibrariesEx(DWORD delay, DWORD reserved);

// The entry points that a class module exports.
STDAPI DllGetClassObject(REFCLSID id, REFIID riid, LPVOID* object);
STDAPI DllCanUnloadNow();

// Property sets, which rest on what stands above.
#include "propidl.h"
