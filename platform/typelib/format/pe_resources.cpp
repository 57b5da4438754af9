#include "platform/typelib/format/pe_resources.h"

#include <string>

#include "platform/system/utf16.h"

namespace velk::typelib {
namespace {

constexpr WORD dosSignature = 0x5a4d;      // "MZ"
constexpr DWORD moduleSignature = 0x4550;  // "PE"
constexpr std::size_t moduleHeaderField = 0x3c;
constexpr std::size_t dosHeaderSize = 64;
constexpr std::size_t fileHeaderSize = 24;  // signature included
constexpr std::size_t sectionCountField = 6;
constexpr std::size_t optionalSizeField = 20;
constexpr WORD optional64 = 0x20b;
constexpr std::size_t longestOptional = 1024;
constexpr std::size_t mostSections = 96;
constexpr std::size_t directories32 = 96;
constexpr std::size_t directories64 = 112;
constexpr std::size_t resourceDirectory = 2;
constexpr std::size_t sectionHeaderSize = 40;

constexpr std::size_t directoryHeaderSize = 16;
constexpr std::size_t directoryEntrySize = 8;
constexpr DWORD highBit = 0x80000000;

// Maps addresses of the loaded module to places in its file.
class Module {
  public:
    explicit Module(ReadBytes const& read) : read_(read) {
        auto const dos = read(0, dosHeaderSize);
        std::uint64_t const header = ByteView(dos).u32(moduleHeaderField);
        auto const file = read(header, fileHeaderSize);
        require(ByteView(file).u32(0) == moduleSignature, TYPE_E_INVDATAREAD);
        std::size_t const optional = ByteView(file).u16(optionalSizeField);
        std::size_t const sections = ByteView(file).u16(sectionCountField);
        require(optional <= longestOptional && sections <= mostSections, TYPE_E_INVDATAREAD);
        optional_ = read(header + fileHeaderSize, optional);
        sections_ = read(header + fileHeaderSize + optional, sections * sectionHeaderSize);
    }

    // The address of the resources; 0 where the module has none.
    DWORD resources() const {
        ByteView const header(optional_);
        std::size_t const directories = header.u16(0) == optional64 ? directories64 : directories32;
        return header.u32(directories + 8 * resourceDirectory);
    }

    // What the address's section holds from there on.
    std::vector<std::byte> from(DWORD address) const {
        auto const place = placeOf(address);
        return read_(place.offset, place.size);
    }
    std::vector<std::byte> at(DWORD address, std::size_t size) const {
        auto const place = placeOf(address);
        require(size <= place.size, TYPE_E_INVDATAREAD);
        return read_(place.offset, size);
    }

  private:
    struct Place {
        std::uint64_t offset;
        std::size_t size;
    };

    Place placeOf(DWORD address) const {
        ByteView const headers(sections_);
        for (std::size_t at = 0; at < headers.size(); at += sectionHeaderSize) {
            DWORD const start = headers.u32(at + 12);
            DWORD const size = headers.u32(at + 16);
            if (address < start || address - start >= size) continue;
            DWORD const skipped = address - start;
            return {std::uint64_t{headers.u32(at + 20)} + skipped, size - skipped};
        }
        fail(TYPE_E_INVDATAREAD);
    }

    ReadBytes const& read_;
    std::vector<std::byte> optional_;
    std::vector<std::byte> sections_;
};

// One level of the resource tree: types, then names, then languages.
class Directory {
  public:
    Directory(ByteView resources, std::size_t offset) : resources_(resources), offset_(offset) {
        count_ = std::size_t{resources.u16(offset + 12)} + resources.u16(offset + 14);
    }

    std::size_t count() const { return count_; }
    DWORD id(std::size_t index) const { return resources_.u32(entry(index)); }
    DWORD target(std::size_t index) const { return resources_.u32(entry(index) + 4); }

    // Where the entry that `matches` leads; nothing where none does.
    template <typename Matches>
    std::optional<DWORD> find(Matches matches) const {
        for (std::size_t i = 0; i < count_; ++i) {
            if (matches(id(i))) return target(i);
        }
        return std::nullopt;
    }

  private:
    std::size_t entry(std::size_t index) const {
        return offset_ + directoryHeaderSize + index * directoryEntrySize;
    }

    ByteView resources_;
    std::size_t offset_;
    std::size_t count_ = 0;
};

bool hasName(ByteView resources, DWORD id, std::u16string_view name) {
    if (!(id & highBit)) return false;
    std::size_t const at = id & ~highBit;
    std::size_t const length = resources.u16(at);
    if (length != name.size()) return false;
    std::u16string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<char16_t>(resources.u16(at + 2 + 2 * i));
    }
    return platform::equalNoAsciiCase(text, name);
}

}  // namespace

bool isPortableExecutable(ByteView beginning) {
    return beginning.size() >= sizeof(WORD) && beginning.u16(0) == dosSignature;
}

std::optional<std::vector<std::byte>> portableResource(ReadBytes const& read,
                                                       std::u16string_view type, WORD number) {
    Module const module(read);
    if (module.resources() == 0) return std::nullopt;
    auto const section = module.from(module.resources());
    ByteView const resources(section);
    auto const names =
        Directory(resources, 0).find([&](DWORD id) { return hasName(resources, id, type); });
    if (!names || !(*names & highBit)) return std::nullopt;
    auto const languages =
        Directory(resources, *names & ~highBit).find([&](DWORD id) { return id == number; });
    if (!languages || !(*languages & highBit)) return std::nullopt;
    Directory const list(resources, *languages & ~highBit);
    if (list.count() == 0 || (list.target(0) & highBit)) return std::nullopt;
    std::size_t const leaf = list.target(0);
    return module.at(resources.u32(leaf), resources.u32(leaf + 4));
}

}  // namespace velk::typelib
