#include "props/document.h"

#include <algorithm>

#include <ole2.h>

#include "com/error.h"
#include "com/stored_properties.h"
#include "com/utf.h"
#include "props/known_sets.h"
#include "text/result_codes.h"
#include "usage_error.h"

namespace velk::velkcom {
namespace {

using com::ComPtr;

constexpr DWORD readingFile = STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE | STGM_READ;
// What is refused half-way is never committed.
constexpr DWORD writingFile = STGM_TRANSACTED | STGM_SHARE_DENY_WRITE | STGM_READWRITE;
constexpr DWORD readingSet = STGM_SHARE_EXCLUSIVE | STGM_READ;
constexpr DWORD writingSet = STGM_SHARE_EXCLUSIVE | STGM_READWRITE;

std::basic_string<OLECHAR> widePath(std::string const& path) {
    auto const wide = com::fromUtf8(path);
    if (!wide || wide->empty()) throw UsageError("\"" + path + "\" is no path");
    return *wide;
}

void check(HRESULT code, std::string const& what) {
    com::throwIfFailed(code, what.c_str());
}

ComPtr<IStorage> openFile(std::string const& path, Document::Use use) {
    ComPtr<IStorage> storage;
    DWORD const mode = use == Document::Use::writing ? writingFile : readingFile;
    check(StgOpenStorage(widePath(path).c_str(), nullptr, mode, nullptr, 0, storage.put()),
          "the file cannot be opened");
    return storage;
}

void commitSet(IPropertyStorage& set) {
    check(set.Commit(STGC_DEFAULT), "the change cannot be written");
}

}  // namespace

Document::Document(std::string const& path, Use use) : Document(openFile(path, use), use) {}

Document::Document(ComPtr<IStorage> storage, Use use) : storage_(std::move(storage)), use_(use) {
    sets_ = storage_.query<IPropertySetStorage>(IID_IPropertySetStorage);
    check(sets_ ? S_OK : E_NOINTERFACE, "the file has no property sets");
}

Document Document::temporary() {
    ComPtr<IStorage> storage;
    check(StgCreateDocfile(nullptr, writingSet | STGM_CREATE | STGM_DELETEONRELEASE, 0,
                           storage.put()),
          "a temporary file cannot be made");
    return {std::move(storage), Use::writing};
}

void Document::create(std::string const& path) {
    ComPtr<IStorage> storage;
    check(StgCreateDocfile(widePath(path).c_str(), writingSet | STGM_FAILIFTHERE, 0, storage.put()),
          "the file cannot be made");
    auto const sets = storage.query<IPropertySetStorage>(IID_IPropertySetStorage);
    check(sets ? S_OK : E_NOINTERFACE, "the file can have no property sets");
    for (FMTID const& id : {FMTID_SummaryInformation, FMTID_DocSummaryInformation}) {
        ComPtr<IPropertyStorage> set;
        check(sets->Create(id, nullptr, PROPSETFLAG_ANSI, writingSet | STGM_CREATE, set.put()),
              "a property set cannot be made");
        commitSet(*set.get());
    }
    check(storage->Commit(STGC_DEFAULT), "the file cannot be written");
}

ComPtr<IPropertyStorage> Document::set(REFFMTID id) const {
    ComPtr<IPropertyStorage> opened;
    HRESULT const code =
        sets_->Open(id, use_ == Use::writing ? writingSet : readingSet, opened.put());
    if (code == STG_E_FILENOTFOUND) return {};
    check(code, "a property set cannot be opened");
    return opened;
}

ComPtr<IPropertyStorage> Document::setForWriting(REFFMTID id) const {
    auto opened = set(id);
    if (opened) return opened;
    // Without STGM_CREATE nothing that has the set's name is replaced.
    check(sets_->Create(id, nullptr, PROPSETFLAG_DEFAULT, writingSet, opened.put()),
          "a property set cannot be made");
    return opened;
}

void Document::commit(IPropertyStorage& set) const {
    commitSet(set);
    check(storage_->Commit(STGC_DEFAULT), "the change cannot be written");
}

std::vector<FMTID> Document::sets() const {
    std::vector<FMTID> there;
    ComPtr<IEnumSTATPROPSETSTG> all;
    check(sets_->Enum(all.put()), "the property sets cannot be listed");
    STATPROPSETSTG status{};
    ULONG done = 0;
    while (all->Next(1, &status, &done) == S_OK) {
        if (!IsEqualGUID(status.fmtid, GUID_NULL)) there.push_back(status.fmtid);
    }
    auto const isThere = [&](REFFMTID id) { return std::ranges::count(there, id) != 0; };
    std::vector<FMTID> ids;
    for (KnownSet const& known : knownSets()) {
        // Some systems do not tell of the set that stands behind another one.
        bool const mayBeBehind =
            known.id == FMTID_UserDefinedProperties && isThere(FMTID_DocSummaryInformation);
        if (mayBeBehind || isThere(known.id)) ids.push_back(known.id);
    }
    for (FMTID const& id : there) {
        if (std::ranges::count(ids, id) == 0) ids.push_back(id);
    }
    return ids;
}

std::optional<Document> openCompoundFile(std::string const& path) {
    try {
        return Document(path, Document::Use::reading);
    } catch (com::Error const& error) {
        if (error.code() == STG_E_FILEALREADYEXISTS) return {};
        throw;
    }
}

std::optional<unsigned> codePageOf(IPropertyStorage& set) {
    PROPSPEC specifier{};
    specifier.ulKind = PRSPEC_PROPID;
    specifier.propid = PID_CODEPAGE;
    com::PropVariant value;
    bool const isThere =
        set.ReadMultiple(1, &specifier, value.put()) == S_OK && value.get().vt == VT_I2;
    return isThere ? std::optional<unsigned>(value.get().uiVal) : std::nullopt;
}

}  // namespace velk::velkcom
