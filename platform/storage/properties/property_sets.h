/// The property sets of a storage.
#pragma once

#include <memory>

#include <propidl.h>

namespace velk::platform::storage {

/// What makes the changes of a storage last, for a storage whose client does
/// not: it was opened in a direct mode. Thread-safe.
class DirectCommit {
  public:
    virtual ~DirectCommit() = default;
    virtual HRESULT commit() noexcept = 0;
    /// A change of the storage has stopped half-way: with it nothing lasts.
    virtual void refuse(HRESULT failure) noexcept = 0;
};

/// Makes, opens and removes the property sets of a storage, each in a stream of
/// its own; only the user-defined properties share that of the document summary
/// information. Simple sets only. A face of the storage itself: its references
/// are the storage's, and the storage ends it.
class PropertySets final : public IPropertySetStorage {
  public:
    /// `commit` follows the commit of a set; null for nothing.
    PropertySets(IStorage& owner, std::shared_ptr<DirectCommit> commit)
        : owner_(owner), commit_(std::move(commit)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override {
        return owner_.QueryInterface(riid, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return owner_.AddRef(); }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return owner_.Release(); }

    HRESULT STDMETHODCALLTYPE Create(REFFMTID formatId, CLSID const* classId, DWORD flags,
                                     DWORD mode, IPropertyStorage** set) noexcept override;
    HRESULT STDMETHODCALLTYPE Open(REFFMTID formatId, DWORD mode,
                                   IPropertyStorage** set) noexcept override;
    HRESULT STDMETHODCALLTYPE Delete(REFFMTID formatId) noexcept override;
    HRESULT STDMETHODCALLTYPE Enum(IEnumSTATPROPSETSTG** sets) noexcept override;

  private:
    IStorage& owner_;
    std::shared_ptr<DirectCommit> commit_;
};

}  // namespace velk::platform::storage
