/// The interface that changes types. A part of oaidl.h.
#pragma once

EXTERN_C VELK_LAYER_EXPORT IID const IID_ICreateTypeInfo;
/// Of a record of a loaded library that gives it no identifier: SetGuid gives it
/// one, which lasts as long as the library is loaded. Everything else answers
/// E_NOTIMPL, and no other type has the interface. Any thread may use it.
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
