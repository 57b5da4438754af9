/// The interfaces that make type libraries. A part of oaidl.h.
#pragma once

EXTERN_C VELK_LAYER_EXPORT IID const IID_ICreateTypeInfo;
/// Describes one type of a library made by CreateTypeLib2.
///
/// What a method is given is copied. The type can be read through ITypeInfo2 of
/// the same object; offsets and sizes of records are right after LayOut. Not
/// for use by several threads at once, nor while others read the library.
///
/// Methods answer E_INVALIDARG for null pointers and for descriptions that
/// contradict themselves, TYPE_E_ELEMENTNOTFOUND for indices and references
/// that stand for nothing, TYPE_E_BADMODULEKIND for what the type's kind does
/// not have, and TYPE_E_AMBIGUOUSNAME for a second member of a name.
struct ICreateTypeInfo : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE SetGuid(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTypeFlags(UINT uTypeFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDocString(LPOLESTR pStrDoc) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD dwHelpContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVersion(WORD wMajorVerNum, WORD wMinorVerNum) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddRefTypeInfo(ITypeInfo* pTInfo, HREFTYPE* phRefType) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddFuncDesc(UINT index, FUNCDESC* pFuncDesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddImplType(UINT index, HREFTYPE hRefType) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetImplTypeFlags(UINT index, INT implTypeFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetAlignment(WORD cbAlignment) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetSchema(LPOLESTR pStrSchema) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddVarDesc(UINT index, VARDESC* pVarDesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFuncAndParamNames(UINT index, LPOLESTR* rgszNames,
                                                           UINT cNames) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVarName(UINT index, LPOLESTR szName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTypeDescAlias(TYPEDESC* pTDescAlias) = 0;
    virtual HRESULT STDMETHODCALLTYPE DefineFuncAsDllEntry(UINT index, LPOLESTR szDllName,
                                                           LPOLESTR szProcName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFuncDocString(UINT index, LPOLESTR szDocString) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVarDocString(UINT index, LPOLESTR szDocString) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFuncHelpContext(UINT index, DWORD dwHelpContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVarHelpContext(UINT index, DWORD dwHelpContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetMops(UINT index, BSTR bstrMops) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetTypeIdldesc(IDLDESC* pIdlDesc) = 0;
    virtual HRESULT STDMETHODCALLTYPE LayOut() = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ICreateTypeInfo2;
struct ICreateTypeInfo2 : ICreateTypeInfo {
    virtual HRESULT STDMETHODCALLTYPE DeleteFuncDesc(UINT index) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteFuncDescByMemId(MEMBERID memid, INVOKEKIND invKind) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteVarDesc(UINT index) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteVarDescByMemId(MEMBERID memid) = 0;
    virtual HRESULT STDMETHODCALLTYPE DeleteImplType(UINT index) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetCustData(REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFuncCustData(UINT index, REFGUID guid,
                                                      VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetParamCustData(UINT indexFunc, UINT indexParam,
                                                       REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVarCustData(UINT index, REFGUID guid,
                                                     VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetImplTypeCustData(UINT index, REFGUID guid,
                                                          VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpStringContext(ULONG dwHelpStringContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetFuncHelpStringContext(UINT index,
                                                               ULONG dwHelpStringContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVarHelpStringContext(UINT index,
                                                              ULONG dwHelpStringContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invalidate() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetName(LPOLESTR szName) = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ICreateTypeLib;
/// Describes a library made by CreateTypeLib2, which can be read through
/// ITypeLib2 of the same object. Not for use by several threads at once, nor
/// while others read the library. Answers are those of ICreateTypeInfo;
/// TYPE_E_NAMECONFLICT for a second type of a name.
struct ICreateTypeLib : IUnknown {
    virtual HRESULT STDMETHODCALLTYPE CreateTypeInfo(LPOLESTR szName, TYPEKIND tkind,
                                                     ICreateTypeInfo** ppCTInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetName(LPOLESTR szName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetVersion(WORD wMajorVerNum, WORD wMinorVerNum) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetGuid(REFGUID guid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDocString(LPOLESTR szDoc) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpFileName(LPOLESTR szHelpFileName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD dwHelpContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetLcid(LCID lcid) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetLibFlags(UINT uLibFlags) = 0;
    /// Always TYPE_E_IOERROR, as for a file that cannot be written: libraries
    /// of this layer are made in memory only.
    virtual HRESULT STDMETHODCALLTYPE SaveAllChanges() = 0;
};

EXTERN_C VELK_LAYER_EXPORT IID const IID_ICreateTypeLib2;
struct ICreateTypeLib2 : ICreateTypeLib {
    /// References to the type stand for nothing from then on; those to other
    /// types stay as they are.
    virtual HRESULT STDMETHODCALLTYPE DeleteTypeInfo(LPOLESTR szName) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetCustData(REFGUID guid, VARIANT* pVarVal) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpStringContext(ULONG dwHelpStringContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetHelpStringDll(LPOLESTR szFileName) = 0;
};
