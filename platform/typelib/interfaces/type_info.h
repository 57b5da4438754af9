/// One type of a loaded library as callers see it.
#pragma once

#include <atomic>
#include <memory>

#include "platform/typelib/interfaces/loaded_record.h"
#include "platform/typelib/interfaces/type_library.h"
#include "platform/typelib/model/names.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {

/// Which side of a type an object shows. Only dual interfaces have two.
enum class View { plain, dispatch, vtable };

/// A function of a type or of one of its bases.
struct FunctionPlace {
    Reference<class TypeInfo> owner;
    FunctionModel const* model = nullptr;
    UINT ownIndex = 0;  ///< among the functions that the owner itself declares
};

/// A member found by name or identifier, in the type itself or in a base.
struct MemberFound {
    Reference<class TypeInfo> owner;
    FunctionModel const* function = nullptr;
    VariableModel const* variable = nullptr;
};

/// ITypeInfo2 over one type of a model. Thread-safe. What no caller needs, the
/// binding of names, the making of instances and single items of custom data
/// among it, is not implemented.
///
/// The dispatch view of a dual interface lists all functions of its vtable,
/// inherited ones first, as an automation client calls them: a result of type
/// HRESULT gives way to the parameter that is the return value, and locale
/// parameters are left out. The vtable view lists the type's own functions as
/// they are.
class TypeInfo final : public ITypeInfo2 {
  public:
    TypeInfo(TypeLibrary& library, TypeModel const& model, std::size_t index, View view);

    TypeLibrary& library() const { return library_; }
    TypeModel const& model() const { return model_; }
    View view() const { return view_; }
    /// The library's identifier, or the one that was given where it has none.
    GUID id() const { return record_ && model_.id == GUID_NULL ? record_->id() : model_.id; }
    TYPEKIND kind() const { return view_ == View::vtable ? TKIND_INTERFACE : model_.kind; }
    MemberIndex const& members() const;
    /// A reference of the library to this view.
    HREFTYPE ownReference() const;
    /// `type` as an object of this class; null for one of another's making.
    static Reference<TypeInfo> own(ITypeInfo& type);

    /// How many functions this view lists.
    UINT functionCount() const;
    /// The function at a position of this view's list.
    FunctionPlace functionAt(UINT index);
    /// The first function or variable of an identifier that `accepts` takes;
    /// nothing found leaves both pointers null.
    MemberFound findById(MEMBERID id, WORD invocations = 0);
    /// All members of a name of the first type in the line of bases that has any.
    std::vector<MemberFound> findByName(Text name);
    /// The type that this one derives from; null where there is none.
    Reference<TypeInfo> base();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** attributes) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** function) noexcept override;
    HRESULT STDMETHODCALLTYPE GetVarDesc(UINT index, VARDESC** variable) noexcept override;
    HRESULT STDMETHODCALLTYPE GetNames(MEMBERID member, BSTR* names, UINT capacity,
                                       UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetRefTypeOfImplType(UINT index,
                                                   HREFTYPE* reference) noexcept override;
    HRESULT STDMETHODCALLTYPE GetImplTypeFlags(UINT index, INT* flags) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(LPOLESTR* names, UINT count,
                                            MEMBERID* members) noexcept override;
    HRESULT STDMETHODCALLTYPE Invoke(PVOID instance, MEMBERID member, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDocumentation(MEMBERID member, BSTR* name, BSTR* help,
                                               DWORD* context, BSTR* helpFile) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDllEntry(MEMBERID member, INVOKEKIND invocation, BSTR* module,
                                          BSTR* name, WORD* ordinal) noexcept override;
    HRESULT STDMETHODCALLTYPE GetRefTypeInfo(HREFTYPE reference,
                                             ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE AddressOfMember(MEMBERID, INVOKEKIND, PVOID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID, PVOID*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetMops(MEMBERID, BSTR*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainingTypeLib(ITypeLib** library,
                                                   UINT* index) noexcept override;
    void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR* attributes) noexcept override;
    void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* function) noexcept override;
    void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC* variable) noexcept override;

    HRESULT STDMETHODCALLTYPE GetTypeKind(TYPEKIND*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeFlags(ULONG*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFuncIndexOfMemId(MEMBERID member, INVOKEKIND invocation,
                                                  UINT* index) noexcept override;
    HRESULT STDMETHODCALLTYPE GetVarIndexOfMemId(MEMBERID, UINT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetCustData(REFGUID, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetFuncCustData(UINT, REFGUID, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetParamCustData(UINT, UINT, REFGUID, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetVarCustData(UINT, REFGUID, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetImplTypeCustData(UINT, REFGUID, VARIANT*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDocumentation2(MEMBERID member, LCID lcid, BSTR* help,
                                                DWORD* context, BSTR* module) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllCustData(CUSTDATA* data) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllFuncCustData(UINT index, CUSTDATA* data) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllParamCustData(UINT function, UINT parameter,
                                                  CUSTDATA* data) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllVarCustData(UINT index, CUSTDATA* data) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllImplTypeCustData(UINT index, CUSTDATA* data) noexcept override;

  private:
    FUNCDESC* describe(FunctionPlace const& place);
    FunctionPlace flattenedFunction(UINT index, int depth);
    ImplementedModel implementedAt(UINT index) const;
    CustomData functionCustomData(UINT index);
    CustomData parameterCustomData(UINT function, UINT parameter);

    TypeLibrary& library_;
    TypeModel const& model_;
    std::size_t const index_;
    View const view_;
    std::atomic<ULONG> references_{0};
    Lazy<MemberIndex> members_;
    /// Only of records that the library gives no identifier.
    std::unique_ptr<LoadedRecord> record_;
};

}  // namespace velk::typelib
