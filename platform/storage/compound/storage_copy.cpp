/// Copying between storages, whoever implements the other one.
#include <algorithm>

#include "platform/com/held_object.h"
#include "platform/storage/compound/storage_object.h"
#include "platform/storage/compound/stream_object.h"

namespace velk::platform::storage {
namespace {

using com::HeldObject;

constexpr DWORD ofCopies = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;
constexpr DWORD ofSources = STGM_READ | STGM_SHARE_EXCLUSIVE;

void require(HRESULT code) {
    failIf(FAILED(code), code);
}

bool isNamed(SNB names, std::u16string const& name) {
    for (SNB each = names; each != nullptr && *each != nullptr; ++each) {
        if (orderedName(*each) == orderedName(name)) return true;
    }
    return false;
}

}  // namespace

HRESULT StorageObject::CopyTo(DWORD excludedCount, IID const* excludedIds, SNB excluded,
                              IStorage* target) noexcept {
    return use([&] {
        failIf(target == nullptr, STG_E_INVALIDPOINTER);
        failIf(excludedCount != 0 && excludedIds == nullptr, STG_E_INVALIDPOINTER);
        auto const isExcluded = [&](IID const& id) {
            return std::find(excludedIds, excludedIds + excludedCount, id) !=
                   excludedIds + excludedCount;
        };
        Entry const own = file_->directory().at(element_->entry);
        require(target->SetClass(own.classId));
        require(target->SetStateBits(own.stateBits, 0xFFFFFFFF));
        // A copy: the target may be in this file.
        auto const all = file_->directory().children(element_->entry);
        for (auto const& [name, id] : all) {
            Entry const entry = file_->directory().at(id);
            bool const isLeftOut = isExcluded(entry.isStorage() ? IID_IStorage : IID_IStream) ||
                                   isNamed(excluded, entry.name);
            if (!isLeftOut) copyElement(entry, entry.name.c_str(), *target);
        }
    });
}

void StorageObject::copyElement(Entry const& entry, OLECHAR const* newName, IStorage& target) {
    if (entry.isStorage()) {
        HeldObject<IStorage> source, copy;
        require(OpenStorage(entry.name.c_str(), nullptr, ofSources, nullptr, 0,
                            reinterpret_cast<IStorage**>(source.target())));
        require(target.CreateStorage(newName, ofCopies, 0, 0,
                                     reinterpret_cast<IStorage**>(copy.target())));
        require(source->CopyTo(0, nullptr, nullptr, copy.get()));
        return;
    }
    HeldObject<IStream> source, copy;
    require(OpenStream(entry.name.c_str(), nullptr, ofSources, 0,
                       reinterpret_cast<IStream**>(source.target())));
    require(
        target.CreateStream(newName, ofCopies, 0, 0, reinterpret_cast<IStream**>(copy.target())));
    ULARGE_INTEGER all;
    all.QuadPart = entry.size;
    require(source->CopyTo(copy.get(), all, nullptr, nullptr));
}

HRESULT StorageObject::MoveElementTo(OLECHAR const* name, IStorage* target, OLECHAR const* newName,
                                     DWORD flags) noexcept {
    return use([&] {
        failIf(target == nullptr, STG_E_INVALIDPOINTER);
        failIf(newName == nullptr, STG_E_INVALIDNAME);
        failIf(flags > STGMOVE_COPY, STG_E_INVALIDFLAG);
        bool const isMove = flags == STGMOVE_MOVE;
        failIf(isMove && !mayWrite(element_->mode), STG_E_ACCESSDENIED);
        EntryId const moved = element(name);
        Entry const entry = file_->directory().at(moved);
        copyElement(entry, newName, *target);
        if (isMove) file_->destroy(element_->entry, moved);
    });
}

}  // namespace velk::platform::storage
