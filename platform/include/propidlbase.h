/// Property sets: values, interfaces, and what they tell of themselves.
/// Slots stand in their published order.
#pragma once

#include "oaidl.h"
#include "objidl_storage.h"

using PROPID = ULONG;

/// A value of the clipboard. `cbSize` counts the four bytes of the format too.
struct CLIPDATA {
    ULONG cbSize;
    LONG ulClipFmt;
    BYTE* pClipData;
};
#define CBPCLIPDATA(data) ((data).cbSize - sizeof((data).ulClipFmt))

struct BSTRBLOB {
    ULONG cbSize;
    BYTE* pData;
};
struct VERSIONEDSTREAM {
    GUID guidVersion;
    IStream* pStream;
};
using LPVERSIONEDSTREAM = VERSIONEDSTREAM*;

struct PROPVARIANT;
/// A counted array of CoTaskMemAlloc.
template <typename Element>
struct VelkCountedArray {
    ULONG cElems;
    Element* pElems;
};
using CAC = VelkCountedArray<CHAR>;
using CAUB = VelkCountedArray<UCHAR>;
using CAI = VelkCountedArray<SHORT>;
using CAUI = VelkCountedArray<USHORT>;
using CAL = VelkCountedArray<LONG>;
using CAUL = VelkCountedArray<ULONG>;
using CAFLT = VelkCountedArray<FLOAT>;
using CADBL = VelkCountedArray<DOUBLE>;
using CACY = VelkCountedArray<CY>;
using CADATE = VelkCountedArray<DATE>;
using CABSTR = VelkCountedArray<BSTR>;
using CABSTRBLOB = VelkCountedArray<BSTRBLOB>;
using CABOOL = VelkCountedArray<VARIANT_BOOL>;
using CASCODE = VelkCountedArray<SCODE>;
using CAPROPVARIANT = VelkCountedArray<PROPVARIANT>;
using CAH = VelkCountedArray<LARGE_INTEGER>;
using CAUH = VelkCountedArray<ULARGE_INTEGER>;
using CALPSTR = VelkCountedArray<LPSTR>;
using CALPWSTR = VelkCountedArray<LPWSTR>;
using CAFILETIME = VelkCountedArray<FILETIME>;
using CACLIPDATA = VelkCountedArray<CLIPDATA>;
using CACLSID = VelkCountedArray<CLSID>;

/// A property's value. Texts, blocks and arrays are of CoTaskMemAlloc, but for
/// a BSTR and a SAFEARRAY; PropVariantClear gives all of it back.
struct PROPVARIANT {
    union {
        struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                CHAR cVal;
                UCHAR bVal;
                SHORT iVal;
                USHORT uiVal;
                LONG lVal;
                ULONG ulVal;
                INT intVal;
                UINT uintVal;
                LARGE_INTEGER hVal;
                ULARGE_INTEGER uhVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                FILETIME filetime;
                CLSID* puuid;
                CLIPDATA* pclipdata;
                BSTR bstrVal;
                BSTRBLOB bstrblobVal;
                BLOB blob;
                LPSTR pszVal;
                LPWSTR pwszVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                IStream* pStream;
                IStorage* pStorage;
                LPVERSIONEDSTREAM pVersionedStream;
                SAFEARRAY* parray;
                CAC cac;
                CAUB caub;
                CAI cai;
                CAUI caui;
                CAL cal;
                CAUL caul;
                CAH cah;
                CAUH cauh;
                CAFLT caflt;
                CADBL cadbl;
                CABOOL cabool;
                CASCODE cascode;
                CACY cacy;
                CADATE cadate;
                CAFILETIME cafiletime;
                CACLSID cauuid;
                CACLIPDATA caclipdata;
                CABSTR cabstr;
                CABSTRBLOB cabstrblob;
                CALPSTR calpstr;
                CALPWSTR calpwstr;
                CAPROPVARIANT capropvar;
            };
        };
        DECIMAL decVal;
    };
};
using LPPROPVARIANT = PROPVARIANT*;
static_assert(sizeof(PROPVARIANT) == 24 && offsetof(PROPVARIANT, lVal) == 8 &&
              offsetof(PROPVARIANT, calpwstr.pElems) == 16);

#define PRSPEC_INVALID 0xffffffffU
#define PRSPEC_LPWSTR 0U
#define PRSPEC_PROPID 1U

/// A property by its id or by its name.
struct PROPSPEC {
    ULONG ulKind;
    union {
        PROPID propid;
        LPOLESTR lpwstr;
    };
};
static_assert(sizeof(PROPSPEC) == 16 && offsetof(PROPSPEC, lpwstr) == 8);

struct STATPROPSTG {
    LPOLESTR lpwstrName;  ///< of CoTaskMemAlloc; null for a property without a name
    PROPID propid;
    VARTYPE vt;
};
static_assert(sizeof(STATPROPSTG) == 16 && offsetof(STATPROPSTG, vt) == 12);

struct STATPROPSETSTG {
    FMTID fmtid;
    CLSID clsid;
    DWORD grfFlags;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD dwOSVersion;
};
static_assert(sizeof(STATPROPSETSTG) == 64 && offsetof(STATPROPSETSTG, dwOSVersion) == 60);

EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumSTATPROPSTG;
struct IEnumSTATPROPSTG : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATPROPSTG* rgelt, ULONG* pceltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATPROPSTG** ppenum) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumSTATPROPSETSTG;
struct IEnumSTATPROPSETSTG : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATPROPSETSTG* rgelt,
                                           ULONG* pceltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumSTATPROPSETSTG** ppenum) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IPropertyStorage;
struct IPropertyStorage : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE ReadMultiple(ULONG cpspec, PROPSPEC const rgpspec[],
                                                   PROPVARIANT rgpropvar[]) = 0;
    virtual HRESULT STDMETHODCALLTYPE WriteMultiple(ULONG cpspec, PROPSPEC const rgpspec[],
                                                    PROPVARIANT const rgpropvar[],
                                                    PROPID propidNameFirst) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteMultiple(ULONG cpspec, PROPSPEC const rgpspec[]) = 0;
    virtual HRESULT STDMETHODCALLTYPE ReadPropertyNames(ULONG cpropid, PROPID const rgpropid[],
                                                        LPOLESTR rglpwstrName[]) = 0;
    virtual HRESULT STDMETHODCALLTYPE WritePropertyNames(ULONG cpropid, PROPID const rgpropid[],
                                                         LPOLESTR const rglpwstrName[]) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeletePropertyNames(ULONG cpropid,
                                                          PROPID const rgpropid[]) = 0;
    virtual HRESULT STDMETHODCALLTYPE Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE Revert() = 0;
    virtual HRESULT STDMETHODCALLTYPE Enum(IEnumSTATPROPSTG** ppenum) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTimes(FILETIME const* pctime, FILETIME const* patime,
                                               FILETIME const* pmtime) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) = 0;
    virtual HRESULT STDMETHODCALLTYPE Stat(STATPROPSETSTG* pstatpsstg) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IPropertySetStorage;
struct IPropertySetStorage : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE Create(REFFMTID rfmtid, CLSID const* pclsid, DWORD grfFlags,
                                             DWORD grfMode, IPropertyStorage** ppprstg) = 0;
    virtual HRESULT STDMETHODCALLTYPE Open(REFFMTID rfmtid, DWORD grfMode,
                                           IPropertyStorage** ppprstg) = 0;
    virtual HRESULT STDMETHODCALLTYPE Delete(REFFMTID rfmtid) = 0;
    virtual HRESULT STDMETHODCALLTYPE Enum(IEnumSTATPROPSETSTG** ppenum) = 0;
};
