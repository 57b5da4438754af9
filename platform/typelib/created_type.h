/// A type of a library that is made in memory.
#pragma once

#include "platform/typelib/created_library.h"
#include "platform/typelib/type_info.h"

namespace velk::typelib {

/// The editing side of a TypeInfo, whose identity and count it shares. Not
/// thread-safe.
///
/// A dual interface is made as an interface and seen as one at first; its
/// dispatch view is the other one.
class CreatedType final : public ICreateTypeInfo2, public Editor {
  public:
    CreatedType(CreatedLibrary& library, TypeInfo& info, TypeModel& model, TYPEKIND kind);

    IUnknown* editingInterface(REFIID riid) noexcept override;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE SetGuid(REFGUID id) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTypeFlags(UINT flags) noexcept override;
    HRESULT STDMETHODCALLTYPE SetDocString(LPOLESTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVersion(WORD major, WORD minor) noexcept override;
    HRESULT STDMETHODCALLTYPE AddRefTypeInfo(ITypeInfo* type,
                                             HREFTYPE* reference) noexcept override;
    HRESULT STDMETHODCALLTYPE AddFuncDesc(UINT index, FUNCDESC* function) noexcept override;
    HRESULT STDMETHODCALLTYPE AddImplType(UINT index, HREFTYPE reference) noexcept override;
    HRESULT STDMETHODCALLTYPE SetImplTypeFlags(UINT index, INT flags) noexcept override;
    HRESULT STDMETHODCALLTYPE SetAlignment(WORD alignment) noexcept override;
    HRESULT STDMETHODCALLTYPE SetSchema(LPOLESTR schema) noexcept override;
    HRESULT STDMETHODCALLTYPE AddVarDesc(UINT index, VARDESC* variable) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFuncAndParamNames(UINT index, LPOLESTR* names,
                                                   UINT count) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVarName(UINT index, LPOLESTR name) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTypeDescAlias(TYPEDESC* type) noexcept override;
    HRESULT STDMETHODCALLTYPE DefineFuncAsDllEntry(UINT index, LPOLESTR module,
                                                   LPOLESTR entry) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFuncDocString(UINT index, LPOLESTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVarDocString(UINT index, LPOLESTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFuncHelpContext(UINT index, DWORD context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVarHelpContext(UINT index, DWORD context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetMops(UINT index, BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTypeIdldesc(IDLDESC* description) noexcept override;
    HRESULT STDMETHODCALLTYPE LayOut() noexcept override;

    HRESULT STDMETHODCALLTYPE DeleteFuncDesc(UINT index) noexcept override;
    HRESULT STDMETHODCALLTYPE DeleteFuncDescByMemId(MEMBERID member,
                                                    INVOKEKIND invocation) noexcept override;
    HRESULT STDMETHODCALLTYPE DeleteVarDesc(UINT index) noexcept override;
    HRESULT STDMETHODCALLTYPE DeleteVarDescByMemId(MEMBERID member) noexcept override;
    HRESULT STDMETHODCALLTYPE DeleteImplType(UINT index) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCustData(REFGUID id, VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFuncCustData(UINT index, REFGUID id,
                                              VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetParamCustData(UINT function, UINT parameter, REFGUID id,
                                               VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVarCustData(UINT index, REFGUID id,
                                             VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetImplTypeCustData(UINT index, REFGUID id,
                                                  VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpStringContext(ULONG context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFuncHelpStringContext(UINT index, ULONG context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVarHelpStringContext(UINT index, ULONG context) noexcept override;
    HRESULT STDMETHODCALLTYPE Invalidate() noexcept override;
    HRESULT STDMETHODCALLTYPE SetName(LPOLESTR name) noexcept override;

  private:
    /// What a caller left to the layout, and the parameters, which the model shows.
    struct FunctionDraft {
        std::span<ParameterModel> parameters;
        bool idGiven = false;
        bool offsetGiven = false;
    };

    // created_members.cpp
    FunctionModel& function(UINT index);
    VariableModel& variable(UINT index);
    FunctionModel copyFunction(FUNCDESC const& given, FunctionDraft& draft);
    ParameterModel copyParameter(ELEMDESC const& given);
    VariableModel copyVariable(VARDESC const& given);
    void requireFreeName(Text name, FunctionModel const* function, VariableModel const* variable);
    void removeFunction(std::size_t index);
    void removeVariable(std::size_t index);
    void membersChanged();

    // created_type.cpp
    ImplementedModel& implemented(UINT index);
    void requireImplementable(HREFTYPE reference, UINT index);
    void implementedChanged();

    // created_layout.cpp
    void layOutMembers();
    std::size_t countBases();
    void assignIds(std::size_t bases);
    void assignSlots();
    void layOutFields();

    CreatedLibrary& library_;
    TypeInfo& info_;
    TypeModel& model_;
    /// As the caller named it: a dual interface is one, whatever the model says.
    TYPEKIND kind_;
    std::size_t place_;
    std::vector<FunctionModel> functions_;
    std::vector<FunctionDraft> functionDrafts_;
    std::vector<VariableModel> variables_;
    std::vector<bool> variableIdsGiven_;
    std::vector<ImplementedModel> implemented_;
};

}  // namespace velk::typelib
