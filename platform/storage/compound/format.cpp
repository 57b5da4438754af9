#include "platform/storage/compound/format.h"

#include <algorithm>
#include <cstring>

#include "platform/system/boundary.h"
#include "platform/system/letter_case.h"

namespace velk::platform::storage {
namespace {

constexpr std::array<unsigned char, 8> signature{0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr std::uint16_t byteOrder = 0xFFFE;

// Where an entry keeps what.
constexpr std::size_t nameLengthAt = 64, typeAt = 66, colourAt = 67, leftAt = 68, rightAt = 72,
                      childAt = 76, classAt = 80, stateAt = 96, createdAt = 100, modifiedAt = 108,
                      firstAt = 116, sizeAt = 120;

EntryType typeOf(std::byte value) {
    switch (std::to_integer<int>(value)) {
        case 1:
            return EntryType::storage;
        case 2:
            return EntryType::stream;
        case 5:
            return EntryType::root;
        case 0:
            return EntryType::unused;
        default:
            return EntryType::unknown;
    }
}

std::u16string readName(Bytes bytes) {
    std::size_t const length = readNumber<std::uint16_t>(bytes, nameLengthAt) / 2;
    std::u16string name;
    for (std::size_t i = 0; i < std::min(length, longestName + 1); ++i) {
        name.push_back(static_cast<char16_t>(readNumber<std::uint16_t>(bytes, 2 * i)));
    }
    if (!name.empty() && name.back() == 0) name.pop_back();
    return name;
}

void writeName(std::u16string const& name, bool isUsed, MutableBytes bytes) {
    std::fill_n(bytes.begin(), nameLengthAt, std::byte{0});
    for (std::size_t i = 0; i < name.size(); ++i) {
        writeNumber<std::uint16_t>(bytes, 2 * i, name[i]);
    }
    auto const units = isUsed ? name.size() + 1 : 0;
    writeNumber(bytes, nameLengthAt, static_cast<std::uint16_t>(2 * units));
}

}  // namespace

Header Header::ofNewFile() {
    Header header;
    std::memcpy(header.bytes_.data(), signature.data(), signature.size());
    writeNumber<std::uint16_t>(header.bytes_, 24, 0x3E);
    writeNumber<std::uint16_t>(header.bytes_, 26, 3);
    writeNumber<std::uint16_t>(header.bytes_, 28, byteOrder);
    writeNumber<std::uint16_t>(header.bytes_, 30, 9);
    writeNumber<std::uint16_t>(header.bytes_, 32, 6);
    writeNumber<std::uint32_t>(header.bytes_, 56, static_cast<std::uint32_t>(smallestBigStream));
    header.setDirectory(endOfChain, 0);
    header.setMiniFat(endOfChain, 0);
    header.setDifatChain(endOfChain, 0);
    for (std::size_t i = 0; i < headerDifatEntries; ++i) header.setDifat(i, freeSector);
    return header;
}

Header Header::parse(std::array<std::byte, headerSize> const& bytes) {
    require(std::memcmp(bytes.data(), signature.data(), signature.size()) == 0,
            STG_E_FILEALREADYEXISTS);
    Header header;
    header.bytes_ = bytes;
    auto const shift = readNumber<std::uint16_t>(bytes, 30);
    bool const known = readNumber<std::uint16_t>(bytes, 28) == byteOrder &&
                       (shift == 9 || shift == 12) && readNumber<std::uint16_t>(bytes, 32) == 6 &&
                       header.number(56) == smallestBigStream;
    require(known, STG_E_OLDFORMAT);
    return header;
}

std::size_t Header::sectorSize() const noexcept {
    return std::size_t{1} << readNumber<std::uint16_t>(bytes_, 30);
}

bool Header::hasLargeSizes() const noexcept {
    return readNumber<std::uint16_t>(bytes_, 26) >= 4;
}

void Header::setDirectory(SectorId first, std::uint32_t sectors) {
    setNumber(48, first);
    setNumber(40, hasLargeSizes() ? sectors : 0);
}

void Header::setMiniFat(SectorId first, std::uint32_t sectors) {
    setNumber(60, first);
    setNumber(64, sectors);
}

void Header::setDifatChain(SectorId first, std::uint32_t sectors) {
    setNumber(68, first);
    setNumber(72, sectors);
}

std::vector<SectorId> readSectorIds(Bytes bytes) {
    std::vector<SectorId> ids(bytes.size() / sizeof(SectorId));
    if (!ids.empty()) std::memcpy(ids.data(), bytes.data(), ids.size() * sizeof(SectorId));
    return ids;
}

Entry parseEntry(Bytes bytes, bool hasLargeSizes) {
    Entry entry;
    entry.storedName = readName(bytes);
    entry.name = entry.storedName.substr(0, entry.storedName.find(u'\0'));
    entry.type = typeOf(bytes[typeAt]);
    entry.isBlack = bytes[colourAt] != std::byte{0};
    entry.left = readNumber<std::uint32_t>(bytes, leftAt);
    entry.right = readNumber<std::uint32_t>(bytes, rightAt);
    entry.child = readNumber<std::uint32_t>(bytes, childAt);
    std::memcpy(&entry.classId, bytes.data() + classAt, sizeof entry.classId);
    entry.stateBits = readNumber<std::uint32_t>(bytes, stateAt);
    entry.created = readNumber<std::uint64_t>(bytes, createdAt);
    entry.modified = readNumber<std::uint64_t>(bytes, modifiedAt);
    entry.firstSector = readNumber<std::uint32_t>(bytes, firstAt);
    entry.size = readNumber<std::uint64_t>(bytes, sizeAt);
    // The upper half means nothing where sizes have 32 bits.
    if (!hasLargeSizes) entry.size &= 0xFFFFFFFF;
    return entry;
}

void writeEntry(Entry const& entry, MutableBytes bytes) {
    std::fill(bytes.begin(), bytes.end(), std::byte{0});
    bool const isUsed = entry.type != EntryType::unused;
    writeName(entry.name, isUsed, bytes);
    bytes[typeAt] = static_cast<std::byte>(entry.type);
    bytes[colourAt] = static_cast<std::byte>(isUsed && entry.isBlack ? 1 : 0);
    writeNumber(bytes, leftAt, entry.left);
    writeNumber(bytes, rightAt, entry.right);
    writeNumber(bytes, childAt, entry.child);
    std::memcpy(bytes.data() + classAt, &entry.classId, sizeof entry.classId);
    writeNumber(bytes, stateAt, entry.stateBits);
    writeNumber(bytes, createdAt, entry.created);
    writeNumber(bytes, modifiedAt, entry.modified);
    writeNumber(bytes, firstAt, isUsed ? entry.firstSector : 0);
    writeNumber(bytes, sizeAt, entry.size);
}

void updateEntry(Entry const& entry, MutableBytes bytes, bool hasLargeSizes) {
    Entry const former = parseEntry(bytes, hasLargeSizes);
    auto const update = [&](std::size_t at, auto const& now, auto const& before) {
        if (now != before) writeNumber(bytes, at, now);
    };
    if (entry.storedName != former.storedName) writeName(entry.storedName, true, bytes);
    if (entry.isBlack != former.isBlack) bytes[colourAt] = std::byte{entry.isBlack};
    update(leftAt, entry.left, former.left);
    update(rightAt, entry.right, former.right);
    update(childAt, entry.child, former.child);
    update(classAt, entry.classId, former.classId);
    update(stateAt, entry.stateBits, former.stateBits);
    update(createdAt, entry.created, former.created);
    update(modifiedAt, entry.modified, former.modified);
    update(firstAt, entry.firstSector, former.firstSector);
    update(sizeAt, entry.size, former.size);
}

std::u16string orderedName(std::u16string_view name) {
    std::u16string ordered(name);
    std::transform(ordered.begin(), ordered.end(), ordered.begin(), upperCase);
    return ordered;
}

}  // namespace velk::platform::storage
