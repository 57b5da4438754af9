// How a library finds the types that its references stand for.

#include "platform/typelib/interfaces/type_info.h"
#include "platform/typelib/loading/library_source.h"

namespace velk::typelib {
namespace {

// Libraries that import each other through more steps than this are taken for
// a circle.
constexpr int longestImportPath = 32;

// Guards who imports whom in this process, so that no circle of references
// comes to be, in which libraries would keep each other alive.
std::mutex importLock;

}  // namespace

Reference<TypeInfo> TypeLibrary::type(std::size_t index) {
    require(index < types_.size(), TYPE_E_ELEMENTNOTFOUND);
    return Reference<TypeInfo>(types_[index].get());
}

Reference<TypeInfo> TypeLibrary::resolve(HREFTYPE reference) {
    std::size_t const index = indexOfReference(reference);
    require(reference != noReference, TYPE_E_ELEMENTNOTFOUND);
    switch (kindOfReference(reference)) {
        case ReferenceKind::local:
            return type(index);
        case ReferenceKind::imported:
            return resolveImported(index);
        case ReferenceKind::otherView: {
            require(index < otherViews_.size() && otherViews_[index], TYPE_E_ELEMENTNOTFOUND);
            return Reference<TypeInfo>(otherViews_[index].get());
        }
        case ReferenceKind::foreign:
            break;
    }
    BorrowedReference borrowed{{}, noReference};
    {
        std::scoped_lock const lock(borrowedLock_);
        require(index < borrowed_.size(), TYPE_E_ELEMENTNOTFOUND);
        borrowed = borrowed_[index];
    }
    return borrowed.owner->resolve(borrowed.reference);
}

HREFTYPE TypeLibrary::borrow(TypeLibrary& owner, HREFTYPE reference) {
    if (&owner == this || reference == noReference) return reference;
    std::scoped_lock const import(importLock);
    require(!owner.reaches(this, 0), TYPE_E_CIRCULARTYPE);
    std::scoped_lock const lock(borrowedLock_);
    for (std::size_t i = 0; i < borrowed_.size(); ++i) {
        if (borrowed_[i].owner.get() == &owner && borrowed_[i].reference == reference) {
            return makeReference(ReferenceKind::foreign, i);
        }
    }
    borrowed_.push_back({Reference<TypeLibrary>(&owner), reference});
    return makeReference(ReferenceKind::foreign, borrowed_.size() - 1);
}

HREFTYPE TypeLibrary::vtableReference(HREFTYPE reference) const {
    std::size_t const index = indexOfReference(reference);
    bool const local = kindOfReference(reference) == ReferenceKind::local;
    if (!local || index >= otherViews_.size()) return reference;
    return otherViews_[index] ? makeReference(ReferenceKind::otherView, index) : reference;
}

Reference<TypeInfo> TypeLibrary::resolveImported(std::size_t index) {
    require(index < model_->importedTypes.size(), TYPE_E_ELEMENTNOTFOUND);
    auto const& entry = model_->importedTypes[index];
    auto const library = importedLibrary(entry.library);
    std::size_t const found = entry.byId ? library->index().identified(entry.id) : entry.index;
    return library->type(found);
}

bool TypeLibrary::reaches(TypeLibrary const* target, int depth) {
    if (this == target || depth > longestImportPath) return true;
    for (auto const& library : imported_) {
        if (library && library->reaches(target, depth + 1)) return true;
    }
    std::scoped_lock const lock(borrowedLock_);
    for (auto const& entry : borrowed_) {
        if (entry.owner->reaches(target, depth + 1)) return true;
    }
    return false;
}

Reference<TypeLibrary> TypeLibrary::importedLibrary(std::size_t index) {
    auto const& entry = model_->importedLibraries[index];
    {
        std::scoped_lock const lock(importLock);
        if (imported_[index]) return imported_[index];
    }
    // Outside of the lock: finding a library reads files and the registry.
    if (entry.id == model_->id) return Reference<TypeLibrary>(this);
    auto found =
        loadRegisteredLibrary(entry.id, entry.majorVersion, entry.minorVersion, entry.lcid);
    std::scoped_lock const lock(importLock);
    if (!imported_[index] && !found->reaches(this, 0)) imported_[index] = found;
    return found;
}

}  // namespace velk::typelib
