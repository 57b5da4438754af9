/// A loaded type library as callers see it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/typelib/lazy.h"
#include "platform/typelib/names.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {

class TypeInfo;

/// The side of a library or type made in memory that changes it. It belongs to
/// the object that it changes and shares its identity and its count.
class Editor {
  public:
    virtual ~Editor() = default;
    /// The editing interface of an identifier, not counted; null for others.
    virtual IUnknown* editingInterface(REFIID riid) noexcept = 0;
};

/// ITypeLib2 and ITypeComp over a model. Thread-safe while the model does not
/// change: everything made later stands behind locks.
///
/// The library owns its type objects. A type object in use holds one reference
/// to its library, so that either may be released first.
class TypeLibrary final : public ITypeLib2, public ITypeComp {
  public:
    /// @param path  where the library was loaded from, empty for none
    static Reference<TypeLibrary> create(std::unique_ptr<LibraryModel const> model,
                                         std::u16string path = {});

    LibraryModel const& model() const { return *model_; }
    std::u16string const& path() const { return path_; }
    LibraryIndex const& index() const;

    /// A type of this library by its place in the model, in its usual view.
    Reference<TypeInfo> type(std::size_t index);
    /// The place in the model of a type that callers count without the deleted
    /// ones; the number of places where there is none.
    std::size_t placeOf(std::size_t published) const;
    /// How callers count the type at a place of the model.
    std::size_t publishedIndexOf(std::size_t place) const;
    /// The type that a reference of this library stands for. Fails with a
    /// ResultError, TYPE_E_ELEMENTNOTFOUND for a reference that is none.
    Reference<TypeInfo> resolve(HREFTYPE reference);
    /// A reference of this library to what `reference` means in `owner`.
    HREFTYPE borrow(TypeLibrary& owner, HREFTYPE reference);

    /// The reference that leads to the vtable of what `reference` stands for.
    HREFTYPE vtableReference(HREFTYPE reference) const;

    /// For the editor: takes in the first type of the model that it has not yet.
    TypeInfo& showNextType();
    /// For the editor: gives the type at a place the views that it now has.
    void updateViews(std::size_t place);
    /// For the editor: names and identifiers have changed.
    void forgetIndex() { index_.forget(); }
    void attach(std::unique_ptr<Editor> editor) { editor_ = std::move(editor); }

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
    HRESULT STDMETHODCALLTYPE GetTypeComp(ITypeComp** binder) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDocumentation(INT index, BSTR* name, BSTR* help, DWORD* context,
                                               BSTR* helpFile) noexcept override;
    HRESULT STDMETHODCALLTYPE IsName(LPOLESTR name, ULONG hash, BOOL* found) noexcept override;
    HRESULT STDMETHODCALLTYPE FindName(LPOLESTR name, ULONG hash, ITypeInfo** types,
                                       MEMBERID* members, USHORT* count) noexcept override;
    void STDMETHODCALLTYPE ReleaseTLibAttr(TLIBATTR* attributes) noexcept override;

    HRESULT STDMETHODCALLTYPE GetCustData(REFGUID id, VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GetLibStatistics(ULONG* names, ULONG* characters) noexcept override;
    HRESULT STDMETHODCALLTYPE GetDocumentation2(INT index, LCID lcid, BSTR* help, DWORD* context,
                                                BSTR* module) noexcept override;
    HRESULT STDMETHODCALLTYPE GetAllCustData(CUSTDATA* data) noexcept override;

    HRESULT STDMETHODCALLTYPE Bind(LPOLESTR name, ULONG hash, WORD flags, ITypeInfo** type,
                                   DESCKIND* kind, BINDPTR* found) noexcept override;
    HRESULT STDMETHODCALLTYPE BindType(LPOLESTR name, ULONG hash, ITypeInfo** type,
                                       ITypeComp** binder) noexcept override;

  private:
    struct BorrowedReference {
        Reference<TypeLibrary> owner;
        HREFTYPE reference;
    };

    TypeLibrary(std::unique_ptr<LibraryModel const> model, std::u16string path);
    ~TypeLibrary();

    Reference<TypeInfo> resolveImported(std::size_t index);
    Reference<TypeLibrary> importedLibrary(std::size_t index);
    Reference<TypeInfo> typeOfKind(Text name, std::vector<TYPEKIND> const& kinds);
    bool reaches(TypeLibrary const* target, int depth);

    std::atomic<ULONG> references_{1};
    std::unique_ptr<LibraryModel const> model_;
    std::u16string path_;
    std::unique_ptr<Editor> editor_;
    std::vector<std::unique_ptr<TypeInfo>> types_;
    /// The less usual views of dual types, null for all others.
    std::vector<std::unique_ptr<TypeInfo>> otherViews_;
    Lazy<LibraryIndex> index_;
    std::vector<Reference<TypeLibrary>> imported_;
    std::vector<BorrowedReference> borrowed_;
    std::mutex borrowedLock_;
};

}  // namespace velk::typelib
