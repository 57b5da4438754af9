// Writes small compound files of every kind, and damaged ones, into a folder.

#include <cstdio>
#include <fstream>
#include <string>

#include "fuzz/compound/memory_file.h"
#include "platform/com/held_object.h"
#include "platform/storage/compound/storage_object.h"
#include "storage/documents.h"

namespace {

using namespace velk::platform::storage;
using velk::fuzz::MemoryFile;
using velk::platform::com::HeldObject;
using FileBytes = std::vector<std::byte>;

constexpr DWORD change = STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE;

template <typename Interface>
Interface** into(HeldObject<Interface>& held) {
    return reinterpret_cast<Interface**>(held.target());
}

void addStream(IStorage& storage, OLECHAR const* name, std::size_t size) {
    HeldObject<IStream> stream;
    check(storage.CreateStream(name, change, 0, 0, into(stream)));
    std::string bytes(size, 0);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 3 + i / 61);
    check(stream->Write(bytes.data(), static_cast<ULONG>(size), nullptr));
}

void addNothing(IStorage&) {}

void addSmallStreams(IStorage& root) {
    addStream(root, u"small", 30);
    addStream(root, u"longer", 300);
    addStream(root, u"empty", 0);
}

void addBigStream(IStorage& root) {
    addSmallStreams(root);
    addStream(root, u"big", 4700);
}

void addNestedStorages(IStorage& root) {
    HeldObject<IStorage> outer, inner;
    check(root.CreateStorage(u"outer", change, 0, 0, into(outer)));
    check(outer->CreateStorage(u"inner", change, 0, 0, into(inner)));
    addStream(*inner.get(), u"deep", 100);
    for (char16_t name = u'a'; name < u'i'; ++name) {
        addStream(*outer.get(), std::u16string(1, name).c_str(), 10);
    }
    check(inner->SetClass(IID_IStorage));
    check(outer->SetStateBits(5, 7));
}

/// Leaves free sectors behind.
void addAndDestroy(IStorage& root) {
    addBigStream(root);
    check(root.Commit(STGC_DEFAULT));
    check(root.DestroyElement(u"big"));
    check(root.DestroyElement(u"longer"));
}

FileBytes fileOf(std::size_t sectorSize, void (*fill)(IStorage&)) {
    FileBytes bytes;
    MemoryFile fresh(bytes);
    CompoundFile::create(fresh, sectorSize);
    HeldObject<IStorage> root;
    *root.target() = static_cast<IStorage*>(
        new StorageObject(std::make_shared<CompoundFile>(std::make_unique<MemoryFile>(bytes), true),
                          STGM_READWRITE | STGM_SHARE_EXCLUSIVE, u"seed"));
    fill(*root.get());
    check(root->Commit(STGC_DEFAULT));
    root = {};
    return bytes;
}

void keep(std::string const& path, FileBytes const& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<char const*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) fail(STG_E_WRITEFAULT);
}

/// The second sector linked to itself, an entry that is in itself, a count of
/// tables that no file has, and the end cut off.
void keepDamaged(std::string const& path, FileBytes sound, std::size_t sectorSize) {
    auto const damaged = [&](char const* how, std::size_t at, std::byte value) {
        FileBytes bytes = sound;
        bytes[at] = value;
        keep(path + how, bytes);
    };
    damaged("_circle", sectorSize + 4, std::byte{1});
    damaged("_own_child", 2 * sectorSize + 76, std::byte{0});
    damaged("_many_tables", 47, std::byte{0xFF});
    damaged("_version", 26, std::byte{4});
    sound.resize(sound.size() - sound.size() / 4);
    keep(path + "_cut", sound);
}

void writeSeeds(std::string const& folder) {
    struct Seed {
        char const* name;
        void (*fill)(IStorage&);
    };
    for (auto const& seed :
         {Seed{"nothing", addNothing}, Seed{"small_streams", addSmallStreams},
          Seed{"big_stream", addBigStream}, Seed{"nested_storages", addNestedStorages},
          Seed{"free_sectors", addAndDestroy}}) {
        for (std::size_t const sectorSize : {std::size_t{512}, std::size_t{4096}}) {
            auto const path = folder + "/" + seed.name + "_" + std::to_string(sectorSize);
            auto const bytes = fileOf(sectorSize, seed.fill);
            keep(path, bytes);
            keepDamaged(path, bytes, sectorSize);
        }
    }
    constexpr std::size_t mostBytes = 200'000;
    for (auto const& document : velk::test::craftedDocuments()) {
        if (document.bytes.size() > mostBytes) continue;
        auto const bytes = std::as_bytes(std::span(document.bytes));
        keep(folder + "/" + document.name, FileBytes(bytes.begin(), bytes.end()));
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    HRESULT const result = answer([&] { writeSeeds(argv[1]); });
    if (FAILED(result)) std::fprintf(stderr, "no seeds: %08lX\n", static_cast<long>(result));
    return FAILED(result) ? 1 : 0;
}
