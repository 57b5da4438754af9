#include "platform/system/resource_section.h"

#include <cstring>
#include <string_view>

#include <elf.h>

#include "platform/system/regular_file.h"

namespace velk::platform {
namespace {

constexpr std::string_view sectionName = ".rsrc.velk";

// More than any module carries; what claims to be larger is no module.
constexpr std::uint64_t largestSection = 256u << 20;

/// A file of which any record can be asked for; every request is checked.
class CheckedFile : public RegularFile {
  public:
    using RegularFile::read;
    using RegularFile::RegularFile;

    template <typename Record>
    std::optional<Record> read(std::uint64_t offset) const {
        Record record;
        return read(offset, &record, sizeof record) ? std::optional(record) : std::nullopt;
    }
};

bool isOfThisMachine(Elf64_Ehdr const& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 &&
           header.e_ident[EI_CLASS] == ELFCLASS64 && header.e_ident[EI_DATA] == ELFDATA2LSB &&
           (header.e_type == ET_DYN || header.e_type == ET_EXEC) && header.e_machine == EM_X86_64;
}

/// The name at `offset` of the string table equals ours.
bool isNamed(CheckedFile const& file, Elf64_Shdr const& names, std::uint32_t offset) {
    std::size_t const length = sectionName.size() + 1;
    if (offset > names.sh_size || names.sh_size - offset < length) return false;
    char text[sectionName.size() + 1];
    if (names.sh_offset > UINT64_MAX - offset) return false;
    if (!file.read(names.sh_offset + offset, text, length)) return false;
    return std::memcmp(text, sectionName.data(), sectionName.size()) == 0 &&
           text[sectionName.size()] == '\0';
}

std::optional<Elf64_Shdr> findSection(CheckedFile const& file, Elf64_Ehdr const& header) {
    if (header.e_shentsize != sizeof(Elf64_Shdr) || header.e_shstrndx >= header.e_shnum) {
        return std::nullopt;
    }
    if (!file.contains(header.e_shoff, std::uint64_t{header.e_shnum} * sizeof(Elf64_Shdr))) {
        return std::nullopt;
    }
    auto const section = [&](std::uint64_t index) {
        return file.read<Elf64_Shdr>(header.e_shoff + index * sizeof(Elf64_Shdr));
    };
    auto const names = section(header.e_shstrndx);
    if (!names) return std::nullopt;
    for (std::uint64_t index = 0; index < header.e_shnum; ++index) {
        auto const candidate = section(index);
        if (candidate && isNamed(file, *names, candidate->sh_name)) return candidate;
    }
    return std::nullopt;
}

}  // namespace

bool isSharedObjectFile(std::string const& path) {
    CheckedFile const file(path);
    auto const header = file.read<Elf64_Ehdr>(0);
    return header && isOfThisMachine(*header);
}

std::optional<ResourceSection> readResourceSection(std::string const& path) {
    CheckedFile const file(path);
    auto const header = file.read<Elf64_Ehdr>(0);
    if (!header || !isOfThisMachine(*header)) return std::nullopt;
    auto const section = findSection(file, *header);
    if (!section || section->sh_type == SHT_NOBITS || section->sh_size > largestSection ||
        !file.contains(section->sh_offset, section->sh_size)) {
        return std::nullopt;
    }
    ResourceSection result{section->sh_addr, std::vector<std::byte>(section->sh_size)};
    if (!file.read(section->sh_offset, result.bytes.data(), result.bytes.size())) {
        return std::nullopt;
    }
    return result;
}

std::optional<std::vector<std::byte>> readResource(std::string const& path,
                                                   ResourceName const& type,
                                                   ResourceName const& name) {
    auto const section = readResourceSection(path);
    if (!section) return std::nullopt;
    auto const search = findResource(section->bytes, type, name);
    auto const data = dataOfEntry(search.entry);
    if (!data) return std::nullopt;
    return std::vector<std::byte>(data->begin(), data->end());
}

}  // namespace velk::platform
