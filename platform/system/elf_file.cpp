#include "platform/system/elf_file.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace velk::platform {
namespace {

using Segments = std::vector<Elf64_Phdr>;

/// Whether the file's part of a loaded segment holds all of `part`.
bool isLoaded(Segments const& segments, Elf64_Phdr const& part) {
    return std::ranges::any_of(segments, [&](Elf64_Phdr const& segment) {
        return segment.p_type == PT_LOAD && part.p_vaddr >= segment.p_vaddr &&
               part.p_filesz <= segment.p_filesz &&
               part.p_vaddr - segment.p_vaddr <= segment.p_filesz - part.p_filesz;
    });
}

}  // namespace

std::optional<Elf64_Ehdr> moduleHeader(RegularFile const& file) noexcept {
    auto const header = file.record<Elf64_Ehdr>(0);
    bool const isModule =
        header && std::memcmp(header->e_ident, ELFMAG, SELFMAG) == 0 &&
        header->e_ident[EI_CLASS] == ELFCLASS64 && header->e_ident[EI_DATA] == ELFDATA2LSB &&
        (header->e_type == ET_DYN || header->e_type == ET_EXEC) && header->e_machine == EM_X86_64;
    return isModule ? header : std::nullopt;
}

bool isWholeSharedObject(RegularFile const& file) {
    auto const header = moduleHeader(file);
    if (!header || header->e_type != ET_DYN || header->e_phentsize != sizeof(Elf64_Phdr)) {
        return false;
    }
    Segments segments(header->e_phnum);
    if (!file.read(header->e_phoff, segments.data(), segments.size() * sizeof(Elf64_Phdr))) {
        return false;
    }
    bool isLinked = false;
    for (auto const& segment : segments) {
        if (!file.contains(segment.p_offset, segment.p_filesz)) return false;
        if (segment.p_type != PT_DYNAMIC) continue;
        if (!isLoaded(segments, segment)) return false;
        isLinked = true;
    }
    return isLinked;
}

}  // namespace velk::platform
