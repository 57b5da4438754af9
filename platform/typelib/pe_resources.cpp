#include "platform/typelib/pe_resources.h"

#include <string>

#include "platform/system/utf16.h"

namespace velk::typelib {
namespace {

constexpr WORD dosSignature = 0x5a4d;      // "MZ"
constexpr DWORD moduleSignature = 0x4550;  // "PE"
constexpr std::size_t moduleHeaderField = 0x3c;
constexpr std::size_t fileHeaderSize = 24;  // signature included
constexpr std::size_t sectionCountField = 6;
constexpr std::size_t optionalSizeField = 20;
constexpr WORD optional64 = 0x20b;
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
    explicit Module(ByteView file) : file_(file), header_(file.u32(moduleHeaderField)) {
        require(file.u32(header_) == moduleSignature, TYPE_E_INVDATAREAD);
        sections_ = header_ + fileHeaderSize + file.u16(header_ + optionalSizeField);
    }

    // The address of the resources; 0 where the module has none.
    DWORD resources() const {
        std::size_t const optional = header_ + fileHeaderSize;
        std::size_t const directories =
            optional + (file_.u16(optional) == optional64 ? directories64 : directories32);
        return file_.u32(directories + 8 * resourceDirectory);
    }

    ByteView at(DWORD address) const {
        std::size_t const count = file_.u16(header_ + sectionCountField);
        for (std::size_t i = 0; i < count; ++i) {
            std::size_t const section = sections_ + i * sectionHeaderSize;
            DWORD const start = file_.u32(section + 12);
            DWORD const size = file_.u32(section + 16);
            if (address < start || address - start >= size) continue;
            return file_.part(file_.u32(section + 20), size).from(address - start);
        }
        fail(TYPE_E_INVDATAREAD);
    }

  private:
    ByteView file_;
    std::size_t header_;
    std::size_t sections_ = 0;
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

bool isPortableExecutable(ByteView file) {
    return file.size() >= sizeof(WORD) && file.u16(0) == dosSignature;
}

std::optional<ByteView> portableResource(ByteView file, std::u16string_view type, WORD number) {
    Module const module(file);
    if (module.resources() == 0) return std::nullopt;
    ByteView const resources = module.at(module.resources());
    auto const names =
        Directory(resources, 0).find([&](DWORD id) { return hasName(resources, id, type); });
    if (!names || !(*names & highBit)) return std::nullopt;
    auto const languages =
        Directory(resources, *names & ~highBit).find([&](DWORD id) { return id == number; });
    if (!languages || !(*languages & highBit)) return std::nullopt;
    Directory const list(resources, *languages & ~highBit);
    if (list.count() == 0 || (list.target(0) & highBit)) return std::nullopt;
    std::size_t const leaf = list.target(0);
    return module.at(resources.u32(leaf)).part(0, resources.u32(leaf + 4));
}

}  // namespace velk::typelib
