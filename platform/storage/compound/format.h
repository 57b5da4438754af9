/// The published layout of compound files.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <objidl_storage.h>

#include "platform/storage/compound/file_access.h"

namespace velk::platform::storage {

using SectorId = std::uint32_t;
using EntryId = std::uint32_t;

inline constexpr SectorId lastSectorId = 0xFFFFFFFA;
inline constexpr SectorId difatSector = 0xFFFFFFFC;
inline constexpr SectorId fatSector = 0xFFFFFFFD;
inline constexpr SectorId endOfChain = 0xFFFFFFFE;
inline constexpr SectorId freeSector = 0xFFFFFFFF;
inline constexpr EntryId noEntry = 0xFFFFFFFF;
inline constexpr EntryId rootEntry = 0;

inline constexpr std::size_t headerSize = 512;
inline constexpr std::size_t entrySize = 128;
inline constexpr std::size_t miniSectorSize = 64;
inline constexpr std::uint64_t smallestBigStream = 4096;
inline constexpr std::size_t headerDifatEntries = 109;
/// The longest name of an element, in UTF-16 units.
inline constexpr std::size_t longestName = 31;

/// Numbers in files have their lowest byte first, as here.
static_assert(std::endian::native == std::endian::little);

template <typename Number>
Number readNumber(Bytes bytes, std::size_t offset) {
    Number number;
    std::memcpy(&number, bytes.subspan(offset, sizeof number).data(), sizeof number);
    return number;
}

template <typename Number>
void writeNumber(MutableBytes bytes, std::size_t offset, Number number) {
    std::memcpy(bytes.subspan(offset, sizeof number).data(), &number, sizeof number);
}

/// The first 512 bytes of the file. Bytes without a meaning here stay as they are.
class Header {
  public:
    /// That of a new file, with sectors of 512 bytes.
    static Header ofNewFile();

    /// Fails with STG_E_FILEALREADYEXISTS when these are no compound file's
    /// bytes, with STG_E_OLDFORMAT when it is of another version.
    static Header parse(std::array<std::byte, headerSize> const& bytes);

    std::array<std::byte, headerSize> const& bytes() const noexcept { return bytes_; }
    bool operator==(Header const&) const = default;

    std::size_t sectorSize() const noexcept;
    /// Whether sizes of streams have 64 bits.
    bool hasLargeSizes() const noexcept;

    SectorId firstDirectorySector() const { return number(48); }
    std::uint32_t fatSectors() const { return number(44); }
    /// Where the count is 0 the first sector means nothing.
    SectorId firstMiniFatSector() const { return number(64) == 0 ? endOfChain : number(60); }
    SectorId firstDifatSector() const { return number(68); }
    std::uint32_t difatSectors() const { return number(72); }
    SectorId difat(std::size_t index) const { return number(76 + 4 * index); }

    /// The count of directory sectors is kept by files with 4096-byte sectors only.
    void setDirectory(SectorId first, std::uint32_t sectors);
    void setMiniFat(SectorId first, std::uint32_t sectors);
    void setDifatChain(SectorId first, std::uint32_t sectors);
    void setFatSectors(std::uint32_t count) { setNumber(44, count); }
    void setDifat(std::size_t index, SectorId sector) { setNumber(76 + 4 * index, sector); }

  private:
    std::uint32_t number(std::size_t offset) const {
        return readNumber<std::uint32_t>(bytes_, offset);
    }
    void setNumber(std::size_t offset, std::uint32_t value) { writeNumber(bytes_, offset, value); }

    std::array<std::byte, headerSize> bytes_{};
};

/// `unknown` is none of the layout's: such an entry stays as it is.
enum class EntryType : std::uint8_t {
    unused = 0,
    storage = 1,
    stream = 2,
    root = 5,
    unknown = 255
};

/// One element in the directory.
struct Entry {
    /// Up to the first zero.
    std::u16string name;
    /// All of the name that the file has, in which there may be zeros: what
    /// others order entries by.
    std::u16string storedName;
    EntryType type = EntryType::unused;
    bool isBlack = true;
    EntryId left = noEntry;
    EntryId right = noEntry;
    EntryId child = noEntry;
    CLSID classId{};
    std::uint32_t stateBits = 0;
    std::uint64_t created = 0;
    std::uint64_t modified = 0;
    SectorId firstSector = endOfChain;
    std::uint64_t size = 0;

    bool isStorage() const { return type == EntryType::storage || type == EntryType::root; }
    bool operator==(Entry const&) const = default;
};

/// What a sector of a table holds.
std::vector<SectorId> readSectorIds(Bytes bytes);

/// Reads 128 bytes. Names that are too long are cut.
Entry parseEntry(Bytes bytes, bool hasLargeSizes);
void writeEntry(Entry const& entry, MutableBytes bytes);
/// Writes what differs from the entry that `bytes` hold and leaves the rest.
void updateEntry(Entry const& entry, MutableBytes bytes, bool hasLargeSizes);

/// The form of an element's name in which names are compared and ordered:
/// shorter ones first, and upper case.
std::u16string orderedName(std::u16string_view name);
struct NameOrder {
    bool operator()(std::u16string const& one, std::u16string const& other) const {
        return one.size() != other.size() ? one.size() < other.size() : one < other;
    }
};

}  // namespace velk::platform::storage
