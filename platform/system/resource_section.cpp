#include "platform/system/resource_section.h"

#include <cstring>
#include <string_view>

#include "platform/system/elf_file.h"

namespace velk::platform {
namespace {

constexpr std::string_view sectionName = ".rsrc.velk";

// More than any module carries; what claims to be larger is no module.
constexpr std::uint64_t largestSection = 64u << 20;

/// The name at `offset` of the string table equals ours.
bool isNamed(RegularFile const& file, Elf64_Shdr const& names, std::uint32_t offset) {
    std::size_t const length = sectionName.size() + 1;
    if (offset > names.sh_size || names.sh_size - offset < length) return false;
    char text[sectionName.size() + 1];
    if (names.sh_offset > UINT64_MAX - offset) return false;
    if (!file.read(names.sh_offset + offset, text, length)) return false;
    return std::memcmp(text, sectionName.data(), sectionName.size()) == 0 &&
           text[sectionName.size()] == '\0';
}

std::optional<Elf64_Shdr> findSection(RegularFile const& file, Elf64_Ehdr const& header) {
    if (header.e_shentsize != sizeof(Elf64_Shdr) || header.e_shstrndx >= header.e_shnum) {
        return std::nullopt;
    }
    if (!file.contains(header.e_shoff, std::uint64_t{header.e_shnum} * sizeof(Elf64_Shdr))) {
        return std::nullopt;
    }
    auto const section = [&](std::uint64_t index) {
        return file.record<Elf64_Shdr>(header.e_shoff + index * sizeof(Elf64_Shdr));
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

std::optional<ResourceSection> readResourceSection(RegularFile const& file) {
    auto const header = moduleHeader(file);
    if (!header) return std::nullopt;
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

}  // namespace velk::platform
