/// Interfaces of COM that the system itself implements.
#pragma once

#include "objidl_storage.h"
#include "unknwn.h"

EXTERN_C VELK_LAYER_EXPORT CLSID const CLSID_StdGlobalInterfaceTable;
EXTERN_C VELK_LAYER_EXPORT IID const IID_IGlobalInterfaceTable;

/// Interfaces that the threads of a process share, each under a cookie. There
/// is one table in a process, of the class CLSID_StdGlobalInterfaceTable, and
/// it lasts as long as the process. Thread-safe.
struct IGlobalInterfaceTable : IUnknown {
    /// Asks `pUnk` for `riid` and keeps the answer with a reference, until the
    /// cookie is revoked. Cookies are never 0. E_INVALIDARG for a null
    /// pointer; E_NOINTERFACE when the object has no such interface.
    virtual HRESULT STDMETHODCALLTYPE RegisterInterfaceInGlobal(IUnknown* pUnk, REFIID riid,
                                                                DWORD* pdwCookie) = 0;
    /// Gives up what is registered. E_INVALIDARG for an unknown cookie.
    virtual HRESULT STDMETHODCALLTYPE RevokeInterfaceFromGlobal(DWORD dwCookie) = 0;
    /// Asks what is registered for an interface. E_INVALIDARG for an unknown
    /// cookie or a null pointer.
    virtual HRESULT STDMETHODCALLTYPE GetInterfaceFromGlobal(DWORD dwCookie, REFIID riid,
                                                             void** ppv) = 0;
};
