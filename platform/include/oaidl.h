/// Structures and interfaces of OLE Automation. Layouts and slots are the published ones.
#pragma once

#include "unknwn.h"

struct IDispatch;
struct ITypeInfo;
struct ITypeLib;
struct ITypeComp;
struct IRecordInfo;

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;
    ULONG cbElements;
    ULONG cLocks;
    PVOID pvData;
    SAFEARRAYBOUND rgsabound[1];
};
using LPSAFEARRAY = SAFEARRAY*;
static_assert(sizeof(SAFEARRAY) == 32 && offsetof(SAFEARRAY, pvData) == 16 &&
              offsetof(SAFEARRAY, rgsabound) == 24);

#define FADF_AUTO 0x1
#define FADF_STATIC 0x2
#define FADF_EMBEDDED 0x4
#define FADF_FIXEDSIZE 0x10
#define FADF_RECORD 0x20
#define FADF_HAVEIID 0x40
#define FADF_HAVEVARTYPE 0x80
#define FADF_BSTR 0x100
#define FADF_UNKNOWN 0x200
#define FADF_DISPATCH 0x400
#define FADF_VARIANT 0x800
#define FADF_CREATEVECTOR 0x2000
#define FADF_RESERVED 0xf008

struct VARIANT {
    union {
        struct {
            VARTYPE vt;
            WORD wReserved1;
            WORD wReserved2;
            WORD wReserved3;
            union {
                LONGLONG llVal;
                LONG lVal;
                BYTE bVal;
                SHORT iVal;
                FLOAT fltVal;
                DOUBLE dblVal;
                VARIANT_BOOL boolVal;
                SCODE scode;
                CY cyVal;
                DATE date;
                BSTR bstrVal;
                IUnknown* punkVal;
                IDispatch* pdispVal;
                SAFEARRAY* parray;
                BYTE* pbVal;
                SHORT* piVal;
                LONG* plVal;
                LONGLONG* pllVal;
                FLOAT* pfltVal;
                DOUBLE* pdblVal;
                VARIANT_BOOL* pboolVal;
                SCODE* pscode;
                CY* pcyVal;
                DATE* pdate;
                BSTR* pbstrVal;
                IUnknown** ppunkVal;
                IDispatch** ppdispVal;
                SAFEARRAY** pparray;
                VARIANT* pvarVal;
                PVOID byref;
                CHAR cVal;
                USHORT uiVal;
                ULONG ulVal;
                ULONGLONG ullVal;
                INT intVal;
                UINT uintVal;
                DECIMAL* pdecVal;
                CHAR* pcVal;
                USHORT* puiVal;
                ULONG* pulVal;
                ULONGLONG* pullVal;
                INT* pintVal;
                UINT* puintVal;
                struct {
                    PVOID pvRecord;
                    IRecordInfo* pRecInfo;
                };
            };
        };
        DECIMAL decVal;
    };
};
using VARIANTARG = VARIANT;
using LPVARIANT = VARIANT*;
static_assert(sizeof(VARIANT) == 24 && offsetof(VARIANT, lVal) == 8 &&
              offsetof(VARIANT, pRecInfo) == 16);

// Enumerations that callers fill in have their type said, so that any number
// in them can be looked at.
enum TYPEKIND : int {
    TKIND_ENUM = 0,
    TKIND_RECORD = 1,
    TKIND_MODULE = 2,
    TKIND_INTERFACE = 3,
    TKIND_DISPATCH = 4,
    TKIND_COCLASS = 5,
    TKIND_ALIAS = 6,
    TKIND_UNION = 7,
    TKIND_MAX = 8
};

struct ARRAYDESC;
struct TYPEDESC {
    union {
        TYPEDESC* lptdesc;
        ARRAYDESC* lpadesc;
        HREFTYPE hreftype;
    };
    VARTYPE vt;
};
static_assert(sizeof(TYPEDESC) == 16 && offsetof(TYPEDESC, vt) == 8);

struct ARRAYDESC {
    TYPEDESC tdescElem;
    USHORT cDims;
    SAFEARRAYBOUND rgbounds[1];
};

struct PARAMDESCEX {
    ULONG cBytes;
    VARIANTARG varDefaultValue;
};
using LPPARAMDESCEX = PARAMDESCEX*;

struct PARAMDESC {
    LPPARAMDESCEX pparamdescex;
    USHORT wParamFlags;
};
#define PARAMFLAG_NONE 0
#define PARAMFLAG_FIN 0x1
#define PARAMFLAG_FOUT 0x2
#define PARAMFLAG_FLCID 0x4
#define PARAMFLAG_FRETVAL 0x8
#define PARAMFLAG_FOPT 0x10
#define PARAMFLAG_FHASDEFAULT 0x20
#define PARAMFLAG_FHASCUSTDATA 0x40

struct IDLDESC {
    ULONG_PTR dwReserved;
    USHORT wIDLFlags;
};
#define IDLFLAG_NONE 0
#define IDLFLAG_FIN 0x1
#define IDLFLAG_FOUT 0x2
#define IDLFLAG_FLCID 0x4
#define IDLFLAG_FRETVAL 0x8

struct ELEMDESC {
    TYPEDESC tdesc;
    union {
        IDLDESC idldesc;
        PARAMDESC paramdesc;
    };
};
static_assert(sizeof(ELEMDESC) == 32);

struct TYPEATTR {
    GUID guid;
    LCID lcid;
    DWORD dwReserved;
    MEMBERID memidConstructor;
    MEMBERID memidDestructor;
    LPOLESTR lpstrSchema;
    ULONG cbSizeInstance;
    TYPEKIND typekind;
    WORD cFuncs;
    WORD cVars;
    WORD cImplTypes;
    WORD cbSizeVft;
    WORD cbAlignment;
    WORD wTypeFlags;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
    TYPEDESC tdescAlias;
    IDLDESC idldescType;
};
using LPTYPEATTR = TYPEATTR*;
static_assert(sizeof(TYPEATTR) == 96 && offsetof(TYPEATTR, typekind) == 44);

enum TYPEFLAGS {
    TYPEFLAG_FAPPOBJECT = 0x1,
    TYPEFLAG_FCANCREATE = 0x2,
    TYPEFLAG_FLICENSED = 0x4,
    TYPEFLAG_FPREDECLID = 0x8,
    TYPEFLAG_FHIDDEN = 0x10,
    TYPEFLAG_FCONTROL = 0x20,
    TYPEFLAG_FDUAL = 0x40,
    TYPEFLAG_FNONEXTENSIBLE = 0x80,
    TYPEFLAG_FOLEAUTOMATION = 0x100,
    TYPEFLAG_FRESTRICTED = 0x200,
    TYPEFLAG_FAGGREGATABLE = 0x400,
    TYPEFLAG_FREPLACEABLE = 0x800,
    TYPEFLAG_FDISPATCHABLE = 0x1000,
    TYPEFLAG_FREVERSEBIND = 0x2000,
    TYPEFLAG_FPROXY = 0x4000
};

enum CALLCONV : int {
    CC_FASTCALL = 0,
    CC_CDECL = 1,
    CC_MSCPASCAL = 2,
    CC_PASCAL = CC_MSCPASCAL,
    CC_MACPASCAL = 3,
    CC_STDCALL = 4,
    CC_FPFASTCALL = 5,
    CC_SYSCALL = 6,
    CC_MPWCDECL = 7,
    CC_MPWPASCAL = 8,
    CC_MAX = 9
};
enum FUNCKIND : int {
    FUNC_VIRTUAL = 0,
    FUNC_PUREVIRTUAL = 1,
    FUNC_NONVIRTUAL = 2,
    FUNC_STATIC = 3,
    FUNC_DISPATCH = 4
};
enum INVOKEKIND : int {
    INVOKE_FUNC = 1,
    INVOKE_PROPERTYGET = 2,
    INVOKE_PROPERTYPUT = 4,
    INVOKE_PROPERTYPUTREF = 8
};
enum FUNCFLAGS {
    FUNCFLAG_FRESTRICTED = 0x1,
    FUNCFLAG_FSOURCE = 0x2,
    FUNCFLAG_FBINDABLE = 0x4,
    FUNCFLAG_FREQUESTEDIT = 0x8,
    FUNCFLAG_FDISPLAYBIND = 0x10,
    FUNCFLAG_FDEFAULTBIND = 0x20,
    FUNCFLAG_FHIDDEN = 0x40,
    FUNCFLAG_FUSESGETLASTERROR = 0x80,
    FUNCFLAG_FDEFAULTCOLLELEM = 0x100,
    FUNCFLAG_FUIDEFAULT = 0x200,
    FUNCFLAG_FNONBROWSABLE = 0x400,
    FUNCFLAG_FREPLACEABLE = 0x800,
    FUNCFLAG_FIMMEDIATEBIND = 0x1000
};
struct FUNCDESC {
    MEMBERID memid;
    SCODE* lprgscode;
    ELEMDESC* lprgelemdescParam;
    FUNCKIND funckind;
    INVOKEKIND invkind;
    CALLCONV callconv;
    SHORT cParams;
    SHORT cParamsOpt;
    SHORT oVft;
    SHORT cScodes;
    ELEMDESC elemdescFunc;
    WORD wFuncFlags;
};
using LPFUNCDESC = FUNCDESC*;
static_assert(sizeof(FUNCDESC) == 88 && offsetof(FUNCDESC, elemdescFunc) == 48);

enum VARKIND : int { VAR_PERINSTANCE = 0, VAR_STATIC = 1, VAR_CONST = 2, VAR_DISPATCH = 3 };
enum VARFLAGS {
    VARFLAG_FREADONLY = 0x1,
    VARFLAG_FSOURCE = 0x2,
    VARFLAG_FBINDABLE = 0x4,
    VARFLAG_FREQUESTEDIT = 0x8,
    VARFLAG_FDISPLAYBIND = 0x10,
    VARFLAG_FDEFAULTBIND = 0x20,
    VARFLAG_FHIDDEN = 0x40,
    VARFLAG_FRESTRICTED = 0x80,
    VARFLAG_FDEFAULTCOLLELEM = 0x100,
    VARFLAG_FUIDEFAULT = 0x200,
    VARFLAG_FNONBROWSABLE = 0x400,
    VARFLAG_FREPLACEABLE = 0x800,
    VARFLAG_FIMMEDIATEBIND = 0x1000
};
struct VARDESC {
    MEMBERID memid;
    LPOLESTR lpstrSchema;
    union {
        ULONG oInst;
        VARIANT* lpvarValue;
    };
    ELEMDESC elemdescVar;
    WORD wVarFlags;
    VARKIND varkind;
};
using LPVARDESC = VARDESC*;
static_assert(sizeof(VARDESC) == 64 && offsetof(VARDESC, elemdescVar) == 24);

#define IMPLTYPEFLAG_FDEFAULT 0x1
#define IMPLTYPEFLAG_FSOURCE 0x2
#define IMPLTYPEFLAG_FRESTRICTED 0x4
#define IMPLTYPEFLAG_FDEFAULTVTABLE 0x8

enum SYSKIND : int { SYS_WIN16 = 0, SYS_WIN32 = 1, SYS_MAC = 2, SYS_WIN64 = 3 };
enum LIBFLAGS {
    LIBFLAG_FRESTRICTED = 0x1,
    LIBFLAG_FCONTROL = 0x2,
    LIBFLAG_FHIDDEN = 0x4,
    LIBFLAG_FHASDISKIMAGE = 0x8
};
struct TLIBATTR {
    GUID guid;
    LCID lcid;
    SYSKIND syskind;
    WORD wMajorVerNum;
    WORD wMinorVerNum;
    WORD wLibFlags;
};
using LPTLIBATTR = TLIBATTR*;
static_assert(sizeof(TLIBATTR) == 32);

struct CUSTDATAITEM {
    GUID guid;
    VARIANTARG varValue;
};
struct CUSTDATA {
    DWORD cCustData;
    CUSTDATAITEM* prgCustData;
};

struct DISPPARAMS {
    VARIANTARG* rgvarg;
    DISPID* rgdispidNamedArgs;
    UINT cArgs;
    UINT cNamedArgs;
};
static_assert(sizeof(DISPPARAMS) == 24);

struct EXCEPINFO {
    WORD wCode;
    WORD wReserved;
    BSTR bstrSource;
    BSTR bstrDescription;
    BSTR bstrHelpFile;
    DWORD dwHelpContext;
    PVOID pvReserved;
    HRESULT(STDAPICALLTYPE* pfnDeferredFillIn)(EXCEPINFO*);
    SCODE scode;
};
static_assert(sizeof(EXCEPINFO) == 64 && offsetof(EXCEPINFO, scode) == 56);

#define DISPID_UNKNOWN (-1)
#define DISPID_VALUE 0
#define DISPID_PROPERTYPUT (-3)
#define DISPID_NEWENUM (-4)
#define DISPID_EVALUATE (-5)
#define DISPID_CONSTRUCTOR (-6)
#define DISPID_DESTRUCTOR (-7)
#define DISPID_COLLECT (-8)
#define MEMBERID_NIL DISPID_UNKNOWN

#define DISPATCH_METHOD 0x1
#define DISPATCH_PROPERTYGET 0x2
#define DISPATCH_PROPERTYPUT 0x4
#define DISPATCH_PROPERTYPUTREF 0x8

EXTERN_C VELK_LAYER_EXPORT IID const IID_IDispatch;
EXTERN_C VELK_LAYER_EXPORT IID const IID_IEnumVARIANT;
struct IDispatch : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames,
                                                    LCID lcid, DISPID* rgDispId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid,
                                             WORD wFlags, DISPPARAMS* pDispParams,
                                             VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                             UINT* puArgErr) = 0;
};
using LPDISPATCH = IDispatch*;

EXTERN_C VELK_LAYER_EXPORT IID const IID_ITypeInfo;
struct ITypeInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** ppTypeAttr) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp** ppTComp) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** ppFuncDesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVarDesc(UINT index, VARDESC** ppVarDesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetNames(MEMBERID memid, BSTR* rgBstrNames, UINT cMaxNames,
                                               UINT* pcNames) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT index, HREFTYPE* pRefType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT index, INT* pImplTypeFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR* rgszNames, UINT cNames,
                                                    MEMBERID* pMemId) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(PVOID pvInstance, MEMBERID memid, WORD wFlags,
                                             DISPPARAMS* pDispParams, VARIANT* pVarResult,
                                             EXCEPINFO* pExcepInfo, UINT* puArgErr) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID memid, BSTR* pBstrName,
                                                       BSTR* pBstrDocString, DWORD* pdwHelpContext,
                                                       BSTR* pBstrHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDllEntry(MEMBERID memid, INVOKEKIND invKind,
                                                  BSTR* pBstrDllName, BSTR* pBstrName,
                                                  WORD* pwOrdinal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE hRefType, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddressOfMember(MEMBERID memid, INVOKEKIND invKind,
                                                      PVOID* ppv) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pUnkOuter, REFIID riid,
                                                     PVOID* ppvObj) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetMops(MEMBERID memid, BSTR* pBstrMops) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib** ppTLib, UINT* pIndex) = 0;
    virtual void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* pTypeAttr) = 0;
    virtual void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* pFuncDesc) = 0;
    virtual void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC* pVarDesc) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ITypeInfo2;
struct ITypeInfo2 : ITypeInfo {
    virtual HRESULT STDMETHODCALLTYPE GetTypeKind(TYPEKIND* pTypeKind) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeFlags(ULONG* pTypeFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFuncIndexOfMemId(MEMBERID memid, INVOKEKIND invKind,
                                                          UINT* pFuncIndex) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVarIndexOfMemId(MEMBERID memid, UINT* pVarIndex) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetCustData(REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFuncCustData(UINT index, REFGUID guid,
                                                      VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetParamCustData(UINT indexFunc, UINT indexParam,
                                                       REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetVarCustData(UINT index, REFGUID guid,
                                                     VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetImplTypeCustData(UINT index, REFGUID guid,
                                                          VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation2(MEMBERID memid, LCID lcid,
                                                        BSTR* pbstrHelpString,
                                                        DWORD* pdwHelpStringContext,
                                                        BSTR* pbstrHelpStringDll) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllCustData(CUSTDATA* pCustData) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllFuncCustData(UINT index, CUSTDATA* pCustData) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllParamCustData(UINT indexFunc, UINT indexParam,
                                                          CUSTDATA* pCustData) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllVarCustData(UINT index, CUSTDATA* pCustData) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllImplTypeCustData(UINT index, CUSTDATA* pCustData) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ITypeLib;
struct ITypeLib : IUnknown {
    virtual UINT STDMETHODCALLTYPE GetTypeInfoCount() = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, ITypeInfo** ppTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT index, TYPEKIND* pTKind) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** ppTinfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** ppTLibAttr) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp** ppTComp) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* pBstrName,
                                                       BSTR* pBstrDocString, DWORD* pdwHelpContext,
                                                       BSTR* pBstrHelpFile) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsName(LPOLESTR szNameBuf, ULONG lHashVal, BOOL* pfName) = 0;
    virtual HRESULT STDMETHODCALLTYPE FindName(LPOLESTR szNameBuf, ULONG lHashVal,
                                               ITypeInfo** ppTInfo, MEMBERID* rgMemId,
                                               USHORT* pcFound) = 0;
    virtual void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* pTLibAttr) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ITypeLib2;
struct ITypeLib2 : ITypeLib {
    virtual HRESULT STDMETHODCALLTYPE GetCustData(REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetLibStatistics(ULONG* pcUniqueNames,
                                                       ULONG* pcchUniqueNames) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetDocumentation2(INT index, LCID lcid, BSTR* pbstrHelpString,
                                                        DWORD* pdwHelpStringContext,
                                                        BSTR* pbstrHelpStringDll) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllCustData(CUSTDATA* pCustData) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_IRecordInfo;
struct IRecordInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE RecordInit(PVOID pvNew) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordClear(PVOID pvExisting) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordCopy(PVOID pvExisting, PVOID pvNew) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetGuid(GUID* pguid) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* pbstrName) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetSize(ULONG* pcbSize) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(ITypeInfo** ppTypeInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetField(PVOID pvData, LPCOLESTR szFieldName,
                                               VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFieldNoCopy(PVOID pvData, LPCOLESTR szFieldName,
                                                     VARIANT* pvarField, PVOID* ppvDataCArray) = 0;
    virtual HRESULT STDMETHODCALLTYPE PutField(ULONG wFlags, PVOID pvData, LPCOLESTR szFieldName,
                                               VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE PutFieldNoCopy(ULONG wFlags, PVOID pvData,
                                                     LPCOLESTR szFieldName, VARIANT* pvarField) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetFieldNames(ULONG* pcNames, BSTR* rgBstrNames) = 0;
    virtual BOOL STDMETHODCALLTYPE IsMatchingType(IRecordInfo* pRecordInfo) = 0;
    virtual PVOID STDMETHODCALLTYPE RecordCreate() = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordCreateCopy(PVOID pvSource, PVOID* ppvDest) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordDestroy(PVOID pvRecord) = 0;
};

/// The elements of a collection, each a VARIANT of the caller's.
struct IEnumVARIANT : IUnknown {
    /// S_FALSE when there were fewer than `celt`.
    virtual HRESULT STDMETHODCALLTYPE Next(ULONG celt, VARIANT* rgVar, ULONG* pCeltFetched) = 0;
    virtual HRESULT STDMETHODCALLTYPE Skip(ULONG celt) = 0;
    virtual HRESULT STDMETHODCALLTYPE Reset() = 0;
    virtual HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** ppEnum) = 0;
};

#include "oaidl_create.h"
