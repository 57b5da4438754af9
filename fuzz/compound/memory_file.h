/// Compound files in memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "platform/com/held_object.h"
#include "platform/storage/compound/storage_object.h"

namespace velk::fuzz {

namespace storage = platform::storage;
using FileBytes = std::vector<std::byte>;

/// The bytes outlive the file object. It grows to `largest` bytes at most, as
/// a medium that is full: a sound file of this size needs no more.
class MemoryFile final : public storage::FileAccess {
  public:
    explicit MemoryFile(FileBytes& bytes) : bytes_(bytes) {}

    std::uint64_t size() override { return bytes_.size(); }
    void read(std::uint64_t offset, storage::MutableBytes target) override {
        std::fill(target.begin(), target.end(), std::byte{0});
        if (offset >= bytes_.size()) return;
        auto const from = static_cast<std::size_t>(offset);
        std::memcpy(target.data(), bytes_.data() + from,
                    std::min(target.size(), bytes_.size() - from));
    }
    void write(std::uint64_t offset, storage::Bytes source) override {
        platform::require(offset <= largest - source.size(), STG_E_MEDIUMFULL);
        auto const end = static_cast<std::size_t>(offset) + source.size();
        if (bytes_.size() < end) bytes_.resize(end);
        std::memcpy(bytes_.data() + offset, source.data(), source.size());
    }
    void truncate(std::uint64_t size) override { bytes_.resize(static_cast<std::size_t>(size)); }
    void sync() override {}
    bool hasReaders() override { return false; }

  private:
    static constexpr std::uint64_t largest = 1 << 22;

    FileBytes& bytes_;
};

constexpr DWORD look = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD change = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

template <typename Interface>
using Held = platform::com::HeldObject<Interface>;

template <typename Interface>
Interface** into(Held<Interface>& held) {
    return reinterpret_cast<Interface**>(held.target());
}

/// The root; empty where the bytes are no compound file.
inline Held<IStorage> openRoot(FileBytes& bytes, DWORD mode) {
    Held<IStorage> root;
    static_cast<void>(storage::answer([&] {
        auto file = std::make_shared<storage::CompoundFile>(std::make_unique<MemoryFile>(bytes),
                                                            storage::mayWrite(mode),
                                                            !storage::isTransacted(mode));
        *root.target() =
            static_cast<IStorage*>(new storage::StorageObject(std::move(file), mode, u"input"));
    }));
    return root;
}

}  // namespace velk::fuzz
