#include "platform/storage/properties/property_sets.h"

#include <coml2api.h>

#include "platform/com/held_object.h"
#include "platform/storage/properties/property_storage.h"
#include "platform/storage/properties/stream_name.h"

namespace velk::platform::storage {
namespace {

using Stream = PropertyStorage::Stream;

constexpr DWORD accessAndSharing =
    STGM_READ | STGM_WRITE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_SHARE_DENY_NONE;

bool isFor(DWORD mode, DWORD access) {
    return (mode & accessAndSharing) == (STGM_SHARE_EXCLUSIVE | access);
}

Stream openStream(IStorage& storage, REFFMTID formatId, DWORD mode) {
    Stream stream;
    check(storage.OpenStream(streamNameOf(formatId).c_str(), nullptr, mode & accessAndSharing, 0,
                             reinterpret_cast<IStream**>(stream.target())));
    return stream;
}

Stream createStream(IStorage& storage, REFFMTID formatId, DWORD mode) {
    Stream stream;
    check(storage.CreateStream(streamNameOf(formatId).c_str(),
                               mode & (accessAndSharing | STGM_CREATE), 0, 0,
                               reinterpret_cast<IStream**>(stream.target())));
    return stream;
}

/// The stream for a new set: an existing one where it has other sets.
Stream streamForNew(IStorage& storage, REFFMTID formatId, DWORD mode) {
    bool const mayReplace = (mode & STGM_CREATE) != 0;
    Stream existing;
    try {
        existing = openStream(storage, formatId, mode);
    } catch (Failure const& error) {
        if (error.code != STG_E_FILENOTFOUND) throw;
        // What has the name all the same is a storage, and is not replaced.
        return createStream(storage, formatId, mode & ~DWORD{STGM_CREATE});
    }
    if (formatId != FMTID_UserDefinedProperties) {
        if (!mayReplace && readSets(*existing.get()).isEmpty()) return existing;
        require(mayReplace, STG_E_FILEALREADYEXISTS);
        existing = {};
        return createStream(storage, formatId, mode);
    }
    bool const isThere = readSets(*existing.get()).has(formatId);
    require(!isThere || mayReplace, STG_E_FILEALREADYEXISTS);
    return existing;
}

/// What an enumeration tells of a property set.
struct SetStatus {
    STATPROPSETSTG status{};

    STATPROPSETSTG give() const { return status; }
    static void takeBack(STATPROPSETSTG&) noexcept {}
};
using SetEnumerator =
    StatusEnumerator<IEnumSTATPROPSETSTG, IID_IEnumSTATPROPSETSTG, STATPROPSETSTG, SetStatus>;

}  // namespace

HRESULT PropertySets::Create(REFFMTID formatId, CLSID const* classId, DWORD flags, DWORD mode,
                             IPropertyStorage** set) noexcept {
    if (set == nullptr) return STG_E_INVALIDPOINTER;
    *set = nullptr;
    return answer([&] {
        constexpr DWORD simple =
            PROPSETFLAG_ANSI | PROPSETFLAG_CASE_SENSITIVE | PROPSETFLAG_UNBUFFERED;
        require((flags & ~simple) == 0 && isFor(mode, STGM_READWRITE), STG_E_INVALIDFLAG);
        PropertyStorage::NewSet const made{classId != nullptr ? *classId : GUID_NULL, flags};
        auto stream = streamForNew(owner_, formatId, mode);
        wholly(commit_.get(), [&] {
            *set = new PropertyStorage(std::move(stream), formatId, mode, commit_, made);
        });
    });
}

HRESULT PropertySets::Open(REFFMTID formatId, DWORD mode, IPropertyStorage** set) noexcept {
    if (set == nullptr) return STG_E_INVALIDPOINTER;
    *set = nullptr;
    return answer([&] {
        require(isFor(mode, STGM_READ) || isFor(mode, STGM_READWRITE), STG_E_INVALIDFLAG);
        *set = new PropertyStorage(openStream(owner_, formatId, mode), formatId, mode, commit_);
    });
}

HRESULT PropertySets::Delete(REFFMTID formatId) noexcept {
    return answer([&] {
        if (formatId == FMTID_UserDefinedProperties) {
            auto const stream = openStream(owner_, formatId, STGM_SHARE_EXCLUSIVE | STGM_READWRITE);
            auto sets = readSets(*stream.get());
            require(sets.has(formatId), STG_E_FILENOTFOUND);
            sets.remove(formatId);
            return writeSets(*stream.get(), sets);
        }
        // A storage of this name is no set of ours.
        static_cast<void>(openStream(owner_, formatId, STGM_SHARE_EXCLUSIVE | STGM_READ));
        check(owner_.DestroyElement(streamNameOf(formatId).c_str()));
    });
}

HRESULT PropertySets::Enum(IEnumSTATPROPSETSTG** sets) noexcept {
    if (sets == nullptr) return STG_E_INVALIDPOINTER;
    *sets = nullptr;
    return answer([&] {
        com::HeldObject<IEnumSTATSTG> elements;
        check(owner_.EnumElements(0, nullptr, 0,
                                  reinterpret_cast<IEnumSTATSTG**>(elements.target())));
        std::vector<SetStatus> all;
        STATSTG element{};
        while (elements->Next(1, &element, nullptr) == S_OK) {
            TaskArray<OLECHAR> const name(element.pwcsName);
            if (name[0] != setNameMark) continue;
            SetStatus set;
            set.status.fmtid = formatIdOf(name.get()).value_or(GUID_NULL);
            set.status.clsid = element.clsid;
            set.status.grfFlags = element.type == STGTY_STORAGE ? PROPSETFLAG_NONSIMPLE : 0;
            set.status.mtime = element.mtime;
            set.status.ctime = element.ctime;
            set.status.atime = element.atime;
            all.push_back(set);
        }
        *sets = new SetEnumerator(std::move(all));
    });
}

}  // namespace velk::platform::storage
