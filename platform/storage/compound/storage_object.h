/// IStorage of a compound file and of the storages in it.
#pragma once

#include <memory>

#include "platform/storage/compound/compound_file.h"
#include "platform/storage/compound/open_mode.h"
#include "platform/storage/properties/property_sets.h"
#include "platform/storage/shared_object.h"

namespace velk::platform::storage {

/// A storage. Changes are in the file after the root's Commit, or after its
/// last release unless it was opened with STGM_TRANSACTED: all of them or none,
/// however the process ends. The root's end reverts what is open in it.
class StorageObject final : public SharedObject<IStorage, IID_IStorage> {
  public:
    /// The root. `path` is the name that Stat tells.
    StorageObject(std::shared_ptr<CompoundFile> file, DWORD mode, std::u16string path);
    /// A storage in `file`.
    StorageObject(std::shared_ptr<CompoundFile> file, std::shared_ptr<OpenElement> element);

    /// Answers IPropertySetStorage too.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override;

    HRESULT STDMETHODCALLTYPE CreateStream(OLECHAR const* name, DWORD mode, DWORD reserved1,
                                           DWORD reserved2, IStream** stream) noexcept override;
    HRESULT STDMETHODCALLTYPE OpenStream(OLECHAR const* name, void* reserved1, DWORD mode,
                                         DWORD reserved2, IStream** stream) noexcept override;
    /// Storages in a file cannot be transacted: STG_E_INVALIDFLAG.
    HRESULT STDMETHODCALLTYPE CreateStorage(OLECHAR const* name, DWORD mode, DWORD reserved1,
                                            DWORD reserved2, IStorage** storage) noexcept override;
    HRESULT STDMETHODCALLTYPE OpenStorage(OLECHAR const* name, IStorage* priority, DWORD mode,
                                          SNB exclude, DWORD reserved,
                                          IStorage** storage) noexcept override;
    /// Nobody copies or moves elements: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD, IID const*, SNB, IStorage*) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE MoveElementTo(OLECHAR const*, IStorage*, OLECHAR const*,
                                            DWORD) noexcept override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) noexcept override;
    HRESULT STDMETHODCALLTYPE Revert() noexcept override;
    HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                           IEnumSTATSTG** elements) noexcept override;
    HRESULT STDMETHODCALLTYPE DestroyElement(OLECHAR const* name) noexcept override;
    HRESULT STDMETHODCALLTYPE RenameElement(OLECHAR const* oldName,
                                            OLECHAR const* newName) noexcept override;
    HRESULT STDMETHODCALLTYPE SetElementTimes(OLECHAR const* name, FILETIME const* created,
                                              FILETIME const* accessed,
                                              FILETIME const* modified) noexcept override;
    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID classId) noexcept override;
    HRESULT STDMETHODCALLTYPE SetStateBits(DWORD bits, DWORD mask) noexcept override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* status, DWORD flags) noexcept override;

  private:
    ~StorageObject() override;

    bool isRoot() const noexcept { return element_->entry == rootEntry; }

    /// Runs `body` while nobody else uses the file.
    template <typename Body>
    HRESULT use(Body body) noexcept {
        return answer([&] {
            std::lock_guard const turn(file_->lock());
            require(!element_->isReverted, STG_E_REVERTED);
            body();
        });
    }
    /// The same for a change, which the mode must permit.
    template <typename Body>
    HRESULT change(Body body) noexcept {
        return use([&] {
            require(mayWrite(element_->mode), STG_E_ACCESSDENIED);
            file_->change(body);
        });
    }

    /// The element of a name. STG_E_FILENOTFOUND.
    EntryId element(OLECHAR const* name);
    EntryId elementOfType(OLECHAR const* name, EntryType type);
    EntryId create(OLECHAR const* name, DWORD mode, EntryType type);

    std::shared_ptr<CompoundFile> file_;
    std::shared_ptr<OpenElement> element_;
    std::u16string path_;
    /// Made when it is asked for first.
    std::unique_ptr<PropertySets> propertySets_;
};

}  // namespace velk::platform::storage
