/// A type library that is made in memory.
#pragma once

#include "platform/typelib/created_copies.h"

namespace velk::typelib {

/// The editing side of a TypeLibrary, whose identity and count it shares. Not
/// thread-safe.
class CreatedLibrary final : public ICreateTypeLib2, public Editor {
  public:
    /// A library without types.
    static Reference<TypeLibrary> create(SYSKIND system);

    CreatedLibrary(TypeLibrary& library, LibraryModel& model);

    TypeLibrary& library() { return library_; }
    LibraryModel& model() { return model_; }
    CreatedCopies& copies() { return copies_; }
    /// A name for a type: TYPE_E_NAMECONFLICT where another one has it.
    Text typeName(LPOLESTR name, TypeModel const* self);
    /// Makes the library refer to IDispatch, which dispatch views implement.
    void needDispatch();

    IUnknown* editingInterface(REFIID riid) noexcept override;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    HRESULT STDMETHODCALLTYPE CreateTypeInfo(LPOLESTR name, TYPEKIND kind,
                                             ICreateTypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE SetName(LPOLESTR name) noexcept override;
    HRESULT STDMETHODCALLTYPE SetVersion(WORD major, WORD minor) noexcept override;
    HRESULT STDMETHODCALLTYPE SetGuid(REFGUID id) noexcept override;
    HRESULT STDMETHODCALLTYPE SetDocString(LPOLESTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpFileName(LPOLESTR file) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetLcid(LCID lcid) noexcept override;
    HRESULT STDMETHODCALLTYPE SetLibFlags(UINT flags) noexcept override;
    HRESULT STDMETHODCALLTYPE SaveAllChanges() noexcept override;

    HRESULT STDMETHODCALLTYPE DeleteTypeInfo(LPOLESTR name) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCustData(REFGUID id, VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpStringContext(ULONG context) noexcept override;
    HRESULT STDMETHODCALLTYPE SetHelpStringDll(LPOLESTR file) noexcept override;

  private:
    TypeModel* typeNamed(Text name);

    TypeLibrary& library_;
    LibraryModel& model_;
    CreatedCopies copies_;
};

}  // namespace velk::typelib
