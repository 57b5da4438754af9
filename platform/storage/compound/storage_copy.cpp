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
/// Storages in one another that are copied. Each takes a part of the stack.
constexpr int deepestCopy = 256;

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
        copyContent(*target, 0, [&](Entry const& entry) {
            return isExcluded(entry.isStorage() ? IID_IStorage : IID_IStream) ||
                   isNamed(excluded, entry.name);
        });
    });
}

template <typename IsLeftOut>
void StorageObject::copyContent(IStorage& target, int depth, IsLeftOut isLeftOut) {
    failIf(depth > deepestCopy, STG_E_INSUFFICIENTMEMORY);
    Entry const own = file_->directory().at(element_->entry);
    require(target.SetClass(own.classId));
    require(target.SetStateBits(own.stateBits, 0xFFFFFFFF));
    // A copy: the target may be in this file.
    auto const all = file_->directory().children(element_->entry);
    for (auto const& [name, id] : all) {
        Entry const entry = file_->directory().at(id);
        if (!isLeftOut(entry)) copyElement(entry, entry.name.c_str(), target, depth);
    }
}

void StorageObject::copyElement(Entry const& entry, OLECHAR const* newName, IStorage& target,
                                int depth) {
    if (entry.isStorage()) {
        HeldObject<IStorage> source, copy;
        require(OpenStorage(entry.name.c_str(), nullptr, ofSources, nullptr, 0,
                            reinterpret_cast<IStorage**>(source.target())));
        require(target.CreateStorage(newName, ofCopies, 0, 0,
                                     reinterpret_cast<IStorage**>(copy.target())));
        static_cast<StorageObject*>(source.get())
            ->copyContent(*copy.get(), depth + 1, [](Entry const&) { return false; });
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
        if (!isMove) return copyElement(entry, newName, *target, 0);
        // The half of a move in this file would be a copy too many.
        file_->change([&] {
            failIf(!file_->directory().hasNamesOnly(moved), STG_E_DOCFILECORRUPT);
            copyElement(entry, newName, *target, 0);
            file_->destroy(element_->entry, moved);
        });
    });
}

}  // namespace velk::platform::storage
