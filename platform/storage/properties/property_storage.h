/// IPropertyStorage: one property set that is open.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "platform/com/held_object.h"
#include "platform/storage/properties/dictionary.h"
#include "platform/storage/properties/held_value.h"
#include "platform/storage/properties/property_sets.h"
#include "platform/storage/properties/set_stream.h"
#include "platform/storage/shared_object.h"

namespace velk::platform::storage {

/// Runs a change of a stream. When it fails, nothing of the file lasts that its
/// client does not commit.
template <typename Body>
void wholly(DirectCommit* commit, Body body) {
    HRESULT const code = answer(body);
    if (FAILED(code) && commit != nullptr) commit->refuse(code);
    check(code);
}

/// A property set in a stream that nobody else has open. Changes are made in
/// memory; Commit writes the stream, and so does the last release unless the
/// set was opened with STGM_TRANSACTED. Thread-safe.
class PropertyStorage final : public SharedObject<IPropertyStorage, IID_IPropertyStorage> {
  public:
    using Stream = com::HeldObject<IStream>;

    /// What a set that does not exist yet is like.
    struct NewSet {
        CLSID classId{};
        DWORD flags = PROPSETFLAG_DEFAULT;
    };

    /// Opens a set. Fails with a Failure: STG_E_FILENOTFOUND when the
    /// stream has no such set that can be read.
    PropertyStorage(Stream stream, REFFMTID formatId, DWORD mode,
                    std::shared_ptr<DirectCommit> commit);

    /// Makes a set, instead of one that the stream has; other sets in the
    /// stream stay.
    PropertyStorage(Stream stream, REFFMTID formatId, DWORD mode,
                    std::shared_ptr<DirectCommit> commit, NewSet const& set);

    HRESULT STDMETHODCALLTYPE ReadMultiple(ULONG count, PROPSPEC const specifiers[],
                                           PROPVARIANT values[]) noexcept override;
    HRESULT STDMETHODCALLTYPE WriteMultiple(ULONG count, PROPSPEC const specifiers[],
                                            PROPVARIANT const values[],
                                            PROPID firstNamed) noexcept override;
    HRESULT STDMETHODCALLTYPE DeleteMultiple(ULONG count,
                                             PROPSPEC const specifiers[]) noexcept override;
    HRESULT STDMETHODCALLTYPE ReadPropertyNames(ULONG count, PROPID const ids[],
                                                LPOLESTR names[]) noexcept override;
    HRESULT STDMETHODCALLTYPE WritePropertyNames(ULONG count, PROPID const ids[],
                                                 LPOLESTR const names[]) noexcept override;
    HRESULT STDMETHODCALLTYPE DeletePropertyNames(ULONG count,
                                                  PROPID const ids[]) noexcept override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) noexcept override;
    HRESULT STDMETHODCALLTYPE Revert() noexcept override;
    HRESULT STDMETHODCALLTYPE Enum(IEnumSTATPROPSTG** properties) noexcept override;
    /// The times of a set are those of its storage: E_NOTIMPL.
    HRESULT STDMETHODCALLTYPE SetTimes(FILETIME const* created, FILETIME const* accessed,
                                       FILETIME const* modified) noexcept override;
    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID classId) noexcept override;
    HRESULT STDMETHODCALLTYPE Stat(STATPROPSETSTG* status) noexcept override;

  private:
    ~PropertyStorage() override;

    template <typename Body>
    HRESULT use(Body body) noexcept;
    /// The same for a change, which the mode must permit.
    template <typename Body>
    HRESULT change(Body body) noexcept;

    void load();
    void commit(DWORD flags);
    std::optional<PROPID> idOf(PROPSPEC const& specifier) const;
    /// For a new name: above all that are in use.
    PROPID firstFreeId(PROPID least) const;
    void removeName(PROPID id);
    HeldValue value(PROPID id) const;
    void writeCodePage(PROPVARIANT const& value);
    void readNames();
    /// Puts the names, where they were changed, into the section.
    void keepNames();

    std::mutex lock_;
    Stream stream_;
    FMTID const formatId_;
    DWORD const mode_;
    std::shared_ptr<DirectCommit> const commit_;
    SetStream set_{GUID_NULL};
    Section* section_ = nullptr;
    Dictionary names_{false};
    bool namesAreChanged_ = false;
    bool isChanged_ = false;
    /// The last commit failed: only the client may try it again.
    bool isRefused_ = false;
};

}  // namespace velk::platform::storage
