/// What native clients know of the module: its interfaces and identifiers.
#pragma once

#include <windows.h>

#include <oleauto.h>

/// {71A9C3E5-2F4B-4E8D-B6A1-5D3E8C0F2B94}, the type library, version 1.0.
extern GUID const LIBID_VelkCOMAdapterLib;
/// {5A2C7E31-9B84-4F06-8D1E-3C7A9B2E4F18}, the class that clients create.
extern CLSID const CLSID_VelkCOMProxy;
/// {2B7D4E19-A6C3-4F58-B0E7-91D2C5A83F6E}, which clients cannot create.
extern CLSID const CLSID_velkdspwrap;
/// {C3E8A1F2-7D54-4B9A-9E21-6F0B3D8C2A47}
extern IID const IID_IVelkCOMProxy;
/// {E4F16C2A-3B97-4D85-8A0C-7E2B9F1D5C63}
extern IID const IID_Ivelkdspwrap;

/// Starts and ends the host application and gives out its objects.
/// VelkCOMAdapterLib.idl describes the same to late-bound clients.
struct IVelkCOMProxy : IDispatch {
    /// A new host object of the host ProgID `name`. S_FALSE, and `retval`
    /// untouched, when there is none.
    virtual HRESULT STDMETHODCALLTYPE CreateObject(BSTR name, IDispatch** retval) = 0;
    /// The running host object of the host ProgID `name`. Always S_FALSE: the
    /// object was found when `retval` was written.
    virtual HRESULT STDMETHODCALLTYPE GetObject(BSTR name, IDispatch** retval) = 0;
    /// Starts the host application, unless it runs, under this name and version.
    virtual HRESULT STDMETHODCALLTYPE InitApplication(BSTR appName, BSTR appVersion) = 0;
    /// Ends the host application, for all proxies of the process.
    virtual HRESULT STDMETHODCALLTYPE TerminateApplication() = 0;
};

/// A native object that stands for a host object.
struct Ivelkdspwrap : IDispatch {
    /// For the module itself: `value` is the address of a host object. A
    /// number from anyone else changes nothing. Always S_OK.
    virtual HRESULT STDMETHODCALLTYPE bindToDispatch(LONGLONG value) = 0;
};
