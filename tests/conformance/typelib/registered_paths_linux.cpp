// What stands where a library's path is registered, and what comes of it: the
// library in that very file, or none.

#include <elf.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "code_names.h"
#include "shapes.h"
#include "support/data_table.h"
#include "support/odd_files_linux.h"

namespace velk::test {
namespace {

std::filesystem::path shapesFile() {
    return VELK_SHAPES_TLB;
}

// The key of the path, as the layer's registry has it.
Wide const placeKey = u"Software\\Classes\\TypeLib\\{3D1B5C02-7A64-4E0F-9C53-1F2A6B8E0D01}\\1.2";

// The library is registered with this path as long as this lives.
class RegisteredLibrary {
  public:
    explicit RegisteredLibrary(Wide const& path) {
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, (placeKey + u"\\407\\win64").c_str(), 0, nullptr, 0,
                        KEY_WRITE, nullptr, &key, nullptr);
        RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<BYTE const*>(path.c_str()),
                       static_cast<DWORD>((path.size() + 1) * sizeof(OLECHAR)));
        RegCloseKey(key);
    }
    RegisteredLibrary(RegisteredLibrary const&) = delete;
    RegisteredLibrary& operator=(RegisteredLibrary const&) = delete;
    ~RegisteredLibrary() {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, placeKey.substr(0, placeKey.rfind(u'\\')).c_str());
    }
};

// Cells hold UTF-8, and halves of surrogate pairs in the same manner.
Wide units(std::string const& cell) {
    Wide text;
    for (std::size_t i = 0; i < cell.size();) {
        auto const byte = [&](std::size_t at) { return static_cast<unsigned char>(cell[at]); };
        std::size_t const length = byte(i) < 0x80 ? 1 : byte(i) < 0xE0 ? 2 : 3;
        unsigned unit = length == 1 ? byte(i) : byte(i) & (0xFF >> (length + 1));
        for (std::size_t at = 1; at < length; ++at) unit = unit << 6 | (byte(i + at) & 0x3F);
        text += static_cast<OLECHAR>(unit);
        i += length;
    }
    return text;
}

void make(OddFiles const& folder, std::string const& what, std::string const& name) {
    if (what == "library") folder.copy(shapesFile(), name);
    if (what == "link") folder.link(shapesFile(), name);
    if (what == "folder") folder.folder(name);
    if (what == "pipe") folder.pipe(name);
    if (what == "text") folder.written(name, "a text");
    if (what == "cut") folder.cut(shapesFile(), name, 200);
}

// In a registered path "*" stands for the folder in which the file was made,
// which is the current one.
TEST(RegisteredLibraries, AreTheRegisteredFileOrNothing) {
    expectTable("typelib/registered_paths.tsv", [](DataRow const& row) {
        OddFiles const folder;
        make(folder, row["made"], row["name"]);
        Wide path = units(row["registered"]);
        if (path.starts_with(u'*')) path.replace(0, 1, folder.at("").u16string());
        RegisteredLibrary const registered(path);
        ComPtr<ITypeLib> found;
        HRESULT const result = LoadRegTypeLib(shapesId(0x01), 1, 2, 0x0407, found.put());
        EXPECT_EQ(bool(found), result == S_OK);
        return codeName(result);
    });
}

// The greatest memory that this program ever had, in MiB.
long mostMemory() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// The layer itself as a file, whose resources claim 700 MiB that are there.
std::filesystem::path moduleWithManyResources(OddFiles const& made) {
    auto const path = made.copy(std::filesystem::canonical(VELK_LAYER_FILE), "module.so");
    std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
    Elf64_Ehdr header{};
    stream.read(reinterpret_cast<char*>(&header), sizeof header);
    // The section of the names becomes the one that is looked for.
    Elf64_Shdr section{};
    auto const place = static_cast<std::streamoff>(header.e_shoff) + sizeof section;
    stream.seekg(place);
    stream.read(reinterpret_cast<char*>(&section), sizeof section);
    Elf64_Shdr names{};
    stream.seekg(static_cast<std::streamoff>(header.e_shoff + header.e_shstrndx * sizeof names));
    stream.read(reinterpret_cast<char*>(&names), sizeof names);
    section.sh_name = 0;
    section.sh_size = 700u << 20;
    stream.seekp(static_cast<std::streamoff>(names.sh_offset));
    stream.write(".rsrc.velk", sizeof ".rsrc.velk");
    stream.seekp(place);
    stream.write(reinterpret_cast<char const*>(&section), sizeof section);
    return path;
}

TEST(GreatFiles, AreReadOnlyAsFarAsTheirHeadersAskFor) {
    OddFiles const made;
    std::filesystem::path const files[] = {
        made.written("zeros", ""),
        made.written("text", "a text"),
        made.copy(shapesFile(), "library.tlb"),
        made.written("module.dll", "MZ"),
        moduleWithManyResources(made),
    };
    long const before = mostMemory();
    for (auto const& file : files) {
        std::filesystem::resize_file(file, 800u << 20);
        ITypeLib* found = nullptr;
        HRESULT const result = LoadTypeLibEx(file.u16string().c_str(), REGKIND_NONE, &found);
        EXPECT_TRUE(result == TYPE_E_CANTLOADLIBRARY || result == TYPE_E_INVDATAREAD) << file;
    }
    EXPECT_LT(mostMemory() - before, 100);
}

}  // namespace
}  // namespace velk::test
