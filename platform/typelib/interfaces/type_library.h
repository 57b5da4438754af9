/// A loaded type library as callers see it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/typelib/model/names.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {

class TypeInfo;

/// ITypeLib2 over a model. Thread-safe: the model never changes, and everything
/// made later stands behind locks. What no caller needs is not implemented.
///
/// The library owns its type objects. A type object in use holds one reference
/// to its library, so that either may be released first.
class TypeLibrary final : public ITypeLib2 {
  public:
    /// @param path  where the library was loaded from, empty for none
    static Reference<TypeLibrary> create(std::unique_ptr<LibraryModel const> model,
                                         std::u16string path = {});

    LibraryModel const& model() const { return *model_; }
    std::u16string const& path() const { return path_; }
    LibraryIndex const& index() const;

    /// A type of this library by its place in the model, in its usual view.
    Reference<TypeInfo> type(std::size_t index);
    /// The type that a reference of this library stands for. Fails with a
    /// Failure, TYPE_E_ELEMENTNOTFOUND for a reference that is none.
    Reference<TypeInfo> resolve(HREFTYPE reference);
    /// A reference of this library to what `reference` means in `owner`.
    HREFTYPE borrow(TypeLibrary& owner, HREFTYPE reference);

    /// The reference that leads to the vtable of what `reference` stands for.
    HREFTYPE vtableReference(HREFTYPE reference) const;

    /// Adds a reference unless the last one has already gone. For caches.
    bool tryAddRef();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;

    UINT STDMETHODCALLTYPE GetTypeInfoCount() noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoType(UINT index, TYPEKIND* kind) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfoOfGuid(REFGUID id, ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE GetLibAttr(TLIBATTR** attributes) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp**) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* name, BSTR* help, DWORD* context,
                                               BSTR* helpFile) noexcept override;
    HRESULT STDMETHODCALLTYPE IsName(LPOLESTR, ULONG, BOOL*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FindName(LPOLESTR name, ULONG hash, ITypeInfo** types,
                                       MEMBERID* members, USHORT* count) noexcept override;
    void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) noexcept override;

    HRESULT STDMETHODCALLTYPE GetCustData(REFGUID, VARIANT*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetLibStatistics(ULONG*, ULONG*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetDocumentation2(INT index, LCID lcid, BSTR* help, DWORD* context,
                                                BSTR* module) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllCustData(CUSTDATA* data) noexcept override;

  private:
    struct BorrowedReference {
        Reference<TypeLibrary> owner;
        HREFTYPE reference;
    };

    TypeLibrary(std::unique_ptr<LibraryModel const> model, std::u16string path);
    ~TypeLibrary();

    Reference<TypeInfo> resolveImported(std::size_t index);
    Reference<TypeLibrary> importedLibrary(std::size_t index);
    bool reaches(TypeLibrary const* target, int depth);

    std::atomic<ULONG> references_{1};
    std::unique_ptr<LibraryModel const> const model_;
    std::u16string const path_;
    std::vector<std::unique_ptr<TypeInfo>> types_;
    /// The less usual views of dual types, null for all others.
    std::vector<std::unique_ptr<TypeInfo>> otherViews_;
    Lazy<LibraryIndex> index_;
    std::vector<Reference<TypeLibrary>> imported_;
    std::vector<BorrowedReference> borrowed_;
    std::mutex borrowedLock_;
};

}  // namespace velk::typelib
