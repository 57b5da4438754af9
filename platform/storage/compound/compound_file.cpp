#include "platform/storage/compound/compound_file.h"

#include <algorithm>

#include "platform/system/boundary.h"

namespace velk::platform::storage {

CompoundFile::CompoundFile(std::unique_ptr<FileAccess> file, bool isWritable, bool isDirect)
    : file_(std::move(file)), isWritable_(isWritable), isDirect_(isDirect), store_(*file_) {
    openTables();
}

void CompoundFile::openTables() {
    directory_.emplace(store_);
    Entry const& root = directory_->at(rootEntry);
    small_.emplace(store_, root.firstSector, root.size);
}

Directory& CompoundFile::directory() {
    require(directory_.has_value(), STG_E_REVERTED);
    return *directory_;
}

MiniStore& CompoundFile::small() {
    require(small_.has_value(), STG_E_REVERTED);
    return *small_;
}

void CompoundFile::create(FileAccess& file) {
    constexpr std::size_t sectorSize = 512;
    // The header, one sector of the table and one of the directory.
    std::vector<std::byte> bytes(3 * sectorSize);
    MutableBytes const table = MutableBytes(bytes).subspan(sectorSize, sectorSize);
    MutableBytes const entries = MutableBytes(bytes).subspan(2 * sectorSize);
    Header header = Header::ofNewFile();
    header.setFatSectors(1);
    header.setDifat(0, 0);
    header.setDirectory(1, 1);
    std::copy(header.bytes().begin(), header.bytes().end(), bytes.begin());
    for (std::size_t i = 0; i < sectorSize; i += 4) writeNumber(table, i, freeSector);
    writeNumber(table, 0, fatSector);
    writeNumber(table, 4, endOfChain);
    Entry root;
    for (std::size_t i = 0; i < sectorSize; i += entrySize) {
        writeEntry(root, entries.subspan(i, entrySize));
    }
    root.name = root.storedName = u"Root Entry";
    root.type = EntryType::root;
    writeEntry(root, entries.first(entrySize));
    file.write(0, bytes);
    file.sync();
}

StreamContent& CompoundFile::content(EntryId stream) {
    auto const known = contents_.find(stream);
    if (known != contents_.end()) return known->second;
    Entry const& entry = directory().at(stream);
    return contents_.try_emplace(stream, store_, small(), entry.firstSector, entry.size)
        .first->second;
}

void CompoundFile::keepPlace(EntryId stream) {
    StreamContent const& place = content(stream);
    Entry const& entry = directory().at(stream);
    if (entry.firstSector == place.first() && entry.size == place.size()) return;
    Entry& changed = directory().change(stream);
    changed.firstSector = place.first();
    changed.size = place.size();
}

std::size_t CompoundFile::readStream(EntryId stream, std::uint64_t offset, MutableBytes target) {
    StreamContent& source = content(stream);
    if (offset >= source.size()) return 0;
    auto const count =
        static_cast<std::size_t>(std::min<std::uint64_t>(target.size(), source.size() - offset));
    source.read(offset, target.first(count));
    return count;
}

void CompoundFile::writeStream(EntryId stream, std::uint64_t offset, Bytes source) {
    if (source.empty()) return;
    StreamContent& target = content(stream);
    require(offset + source.size() >= offset, STG_E_MEDIUMFULL);
    changeContent(stream, [&] {
        if (offset + source.size() > target.size()) target.resize(offset + source.size());
        target.write(offset, source);
    });
}

void CompoundFile::resizeStream(EntryId stream, std::uint64_t size) {
    StreamContent& target = content(stream);
    changeContent(stream, [&] { target.resize(size); });
}

/// A stream may have moved even where its change failed half-way, for want of
/// room say.
template <typename Body>
void CompoundFile::changeContent(EntryId stream, Body body) {
    change([&] {
        try {
            body();
        } catch (...) {
            keepPlace(stream);
            throw;
        }
        keepPlace(stream);
    });
}

void CompoundFile::destroy(EntryId storage, EntryId element) {
    struct Doomed {
        EntryId storage, element;
    };
    // A list and not a recursion: storages may lie in one another without end.
    std::vector<Doomed> all{{storage, element}};
    for (std::size_t i = 0; i < all.size(); ++i) {
        EntryId const outer = all[i].element;
        if (!directory().at(outer).isStorage()) continue;
        for (EntryId const entry : directory().everythingIn(outer)) all.push_back({outer, entry});
    }
    // What is inside goes first.
    for (auto each = all.rbegin(); each != all.rend(); ++each) {
        destroyOne(each->storage, each->element);
    }
}

void CompoundFile::destroyOne(EntryId storage, EntryId element) {
    if (directory().at(element).type == EntryType::stream) {
        resizeStream(element, 0);
        contents_.erase(element);
    }
    directory().remove(storage, element);
    for (auto const& each : open_) {
        auto const opened = each.lock();
        if (opened && opened->entry == element) opened->isReverted = true;
    }
}

std::shared_ptr<OpenElement> CompoundFile::open(EntryId element, DWORD mode) {
    std::erase_if(open_, [](auto const& each) { return each.expired(); });
    for (auto const& each : open_) {
        auto const opened = each.lock();
        require(!opened || opened->entry != element || opened->isReverted, STG_E_ACCESSDENIED);
    }
    auto opened = std::make_shared<OpenElement>(OpenElement{element, mode});
    open_.push_back(opened);
    return opened;
}

void CompoundFile::commit() {
    if (!isWritable_) return;
    require(torn_ == S_OK, torn_);
    change([&] {
        Entry const& root = directory().at(rootEntry);
        bool const hasContainer = root.size != 0 || small().containerSize() != 0;
        if (hasContainer &&
            (root.firstSector != small().container() || root.size != small().containerSize())) {
            Entry& changed = directory().change(rootEntry);
            changed.firstSector = small().container();
            changed.size = small().containerSize();
        }
        directory().flush();
        small().flush();
        store_.commit();
    });
}

void CompoundFile::revert() {
    revertElements();
    contents_.clear();
    small_.reset();
    directory_.reset();
    store_.revert();
    openTables();
    torn_ = S_OK;
}

void CompoundFile::close() noexcept {
    revertElements();
    // There is nobody left to tell: what counts is whole whatever comes of it.
    // What goes wrong once may go well the next time.
    auto const restore = [&] { return guarded([&] { store_.restoreFile(); }); };
    if (file_ && isWritable_ && FAILED(restore())) static_cast<void>(restore());
    file_.reset();
}

void CompoundFile::checkSize(EntryId stream) {
    require(directory().at(stream).size / store_.sectorSize() <= store_.sectorLimit(),
            STG_E_DOCFILECORRUPT);
}

void CompoundFile::revertElements() noexcept {
    for (auto const& each : open_) {
        if (auto const opened = each.lock()) opened->isReverted = true;
    }
    open_.clear();
}

}  // namespace velk::platform::storage
