// What stands where a library's path is registered, and what comes of it: the
// library in that very file, or none.

#include <functional>

#include <elf.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "shapes.h"
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

struct Row {
    char const* what;
    std::function<Wide(OddFiles const&)> make;
    HRESULT expected;
};

// A path, with the library where somebody might look instead.
Wide beside(OddFiles const& made, std::string const& decoy, Wide const& name) {
    made.copy(shapesFile(), decoy);
    return made.at("").u16string() + name;
}

Row const rows[] = {
    {"a path", [](auto& made) { return made.copy(shapesFile(), "x.tlb").u16string(); }, S_OK},
    {"a link", [](auto& made) { return made.link(shapesFile(), "x.tlb").u16string(); }, S_OK},
    {"the loader's words",
     [](auto& made) { return made.copy(shapesFile(), "$LIB/$ORIGIN.tlb").u16string(); }, S_OK},
    {"a name that ends like a number of a resource",
     [](auto& made) { return made.copy(shapesFile(), "x\\2").u16string(); }, S_OK},
    {"a word of the loader, the library at its meaning",
     [](auto& made) { return beside(made, "lib/x86_64-linux-gnu/x.tlb", u"$LIB/x.tlb"); },
     TYPE_E_CANTLOADLIBRARY},
    {"a file name in the current folder",
     [](auto& made) { return made.copy(shapesFile(), "x.tlb"), u"x.tlb"; }, TYPE_E_CANTLOADLIBRARY},
    {"a path from the current folder",
     [](auto& made) { return made.copy(shapesFile(), "x.tlb"), u"./x.tlb"; },
     TYPE_E_CANTLOADLIBRARY},
    {"half a character", [](auto& made) { return beside(made, "\xEF\xBF\xBD", u"\xD800"); },
     TYPE_E_CANTLOADLIBRARY},
    {"two halves of a byte's form",
     [](auto& made) { return beside(made, "\xC3\xA4", u"\xDCC3\xDCA4"); }, TYPE_E_CANTLOADLIBRARY},
    {"nothing", [](auto&) { return Wide(); }, TYPE_E_LIBNOTREGISTERED},
    {"a missing file", [](auto& made) { return made.at("x.tlb").u16string(); },
     TYPE_E_CANTLOADLIBRARY},
    {"a folder", [](auto& made) { return made.folder("x.tlb").u16string(); },
     TYPE_E_CANTLOADLIBRARY},
    {"a pipe", [](auto& made) { return made.pipe("x.tlb").u16string(); }, TYPE_E_CANTLOADLIBRARY},
    {"a device", [](auto&) { return Wide(u"/dev/zero"); }, TYPE_E_CANTLOADLIBRARY},
    {"a text", [](auto& made) { return made.written("x.tlb", "a text").u16string(); },
     TYPE_E_CANTLOADLIBRARY},
    {"a file that is cut short",
     [](auto& made) { return made.cut(shapesFile(), "x.tlb", 200).u16string(); },
     TYPE_E_INVDATAREAD},
};

TEST(RegisteredLibraries, AreTheRegisteredFileOrNothing) {
    for (auto const& row : rows) {
        OddFiles const made;
        RegisteredLibrary const registered(row.make(made));
        ITypeLib* found = nullptr;
        EXPECT_EQ(LoadRegTypeLib(shapesId(0x01), 1, 2, 0x0407, &found), row.expected) << row.what;
        EXPECT_EQ(found != nullptr, row.expected == S_OK) << row.what;
        if (found != nullptr) found->Release();
    }
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
