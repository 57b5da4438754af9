/// Interfaces by which objects tell about their class and raise events.
#pragma once

#include "oaidl.h"

EXTERN_C VELK_LAYER_EXPORT IID const IID_IProvideClassInfo;

/// An object that knows its class.
struct IProvideClassInfo : IUnknown {
    /// Hands out the description of the object's coclass. E_POINTER for null.
    virtual HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** ppTI) = 0;
};

struct IConnectionPoint;
struct IConnectionPointContainer;

struct CONNECTDATA {
    IUnknown* pUnk;
    DWORD dwCookie;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumConnections;
EXTERN_C VELK_LAYER_EXPORT IID const IID_IConnectionPoint;
EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumConnectionPoints;
EXTERN_C VELK_LAYER_EXPORT IID const IID_IConnectionPointContainer;

/// The sinks of a connection point, each with a reference of the caller's.
struct IEnumConnections : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG cConnections, CONNECTDATA* rgcd,
                                           ULONG* pcFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cConnections) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumConnections** ppEnum) = 0;
};

/// Where sinks of one outgoing interface are told to an object.
struct IConnectionPoint : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* pIID) = 0;
    virtual HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** ppCPC) = 0;
    /// Keeps the sink until `Unadvise` with the cookie, which is never 0.
    virtual HRESULT STDMETHODCALLTYPE Advise(IUnknown* pUnkSink, DWORD* pdwCookie) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(DWORD dwCookie) = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** ppEnum) = 0;
};

struct IEnumConnectionPoints : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG cConnections, IConnectionPoint** ppCP,
                                           ULONG* pcFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG cConnections) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumConnectionPoints** ppEnum) = 0;
};

/// An object that raises events.
struct IConnectionPointContainer : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** ppEnum) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID riid, IConnectionPoint** ppCP) = 0;
};
