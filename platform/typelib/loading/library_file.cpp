// Libraries from files, and that of the standard types, carried in this module.

#include <algorithm>
#include <filesystem>
#include <vector>

#include "platform/system/elf_file.h"
#include "platform/system/resource_list.h"
#include "platform/system/resource_section.h"
#include "platform/system/utf16.h"
#include "platform/typelib/format/msft_reader.h"
#include "platform/typelib/format/pe_resources.h"
#include "platform/typelib/loading/library_source.h"

// The compiled library, put between these two by the build.
extern "C" __attribute__((visibility("hidden"))) std::byte const velkStandardTypesBegin[];
extern "C" __attribute__((visibility("hidden"))) std::byte const velkStandardTypesEnd[];

namespace velk::typelib {
namespace {

constexpr WORD usualResource = 1;

// Many times what the greatest libraries in use have.
constexpr std::uint64_t largestLibrary = 64u << 20;
// As much as tells a library from a module.
constexpr std::uint64_t libraryBeginning = 4;

struct LibraryPlace {
    std::string file;
    WORD resource = usualResource;
    bool explicitResource = false;
};

bool isRegularFile(std::string const& file) {
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

// "file\2" names the second library of a module, unless a file has that very name.
LibraryPlace placeOf(std::u16string_view path) {
    auto file = platform::toFileName(path);
    require(file.has_value(), TYPE_E_CANTLOADLIBRARY);
    LibraryPlace place{*std::move(file)};
    std::size_t const mark = place.file.find_last_of('\\');
    if (mark == std::string::npos || isRegularFile(place.file)) return place;
    std::string const number = place.file.substr(mark + 1);
    bool const digits = !number.empty() && number.size() <= 5 &&
                        number.find_first_not_of("0123456789") == std::string::npos;
    if (!digits || std::stoul(number) > 0xffff) return place;
    return {place.file.substr(0, mark), static_cast<WORD>(std::stoul(number)), true};
}

std::vector<std::byte> bytesOf(platform::RegularFile const& file, std::uint64_t offset,
                               std::uint64_t size) {
    require(file.contains(offset, size), TYPE_E_INVDATAREAD);
    require(size <= largestLibrary, TYPE_E_CANTLOADLIBRARY);
    std::vector<std::byte> bytes(size);
    require(file.read(offset, bytes.data(), size), TYPE_E_IOERROR);
    return bytes;
}

std::unique_ptr<LibraryModel const> readFromModule(platform::RegularFile const& file, WORD number) {
    auto const section = platform::readResourceSection(file);
    require(section.has_value(), TYPE_E_CANTLOADLIBRARY);
    auto const search = platform::findResource(section->bytes, platform::ResourceName(u"TYPELIB"),
                                               platform::ResourceName(number));
    auto const resource = platform::dataOfEntry(search.entry);
    require(resource.has_value(), TYPE_E_CANTLOADLIBRARY);
    return readMsftLibrary(ByteView(*resource));
}

// What the file is shows in its first bytes; no more is read than that needs.
std::unique_ptr<LibraryModel const> readLibrary(platform::RegularFile const& file, WORD number) {
    if (platform::moduleHeader(file)) return readFromModule(file, number);
    auto const beginning = bytesOf(file, 0, std::min(file.size(), libraryBeginning));
    if (isPortableExecutable(ByteView(beginning))) {
        auto const resource =
            portableResource([&](auto offset, auto size) { return bytesOf(file, offset, size); },
                             u"TYPELIB", number);
        require(resource.has_value(), TYPE_E_CANTLOADLIBRARY);
        return readMsftLibrary(ByteView(*resource));
    }
    requireMsftSignature(ByteView(beginning));
    return readMsftLibrary(ByteView(bytesOf(file, 0, file.size())));
}

// A file that was replaced is another one, even while the old one is in use.
std::u16string keyOf(platform::RegularFile const& file, LibraryPlace const& place,
                     std::string const& path) {
    auto const& status = file.status();
    std::string const key = path + "\n" + std::to_string(place.resource) + "\n" +
                            std::to_string(status.st_ino) + "\n" + std::to_string(status.st_size) +
                            "\n" + std::to_string(status.st_mtim.tv_sec) + "." +
                            std::to_string(status.st_mtim.tv_nsec);
    return platform::toUtf16(key);
}

}  // namespace

Reference<TypeLibrary> loadLibraryFile(std::u16string_view path) {
    auto const place = placeOf(path);
    platform::RegularFile const file(place.file);
    require(file.isOpen(), TYPE_E_CANTLOADLIBRARY);
    std::error_code error;
    auto const absolute = std::filesystem::canonical(place.file, error).string();
    if (error == std::errc::not_enough_memory) throw std::bad_alloc();
    require(!error, TYPE_E_CANTLOADLIBRARY);
    return sharedLibrary(keyOf(file, place, absolute), [&] {
        auto name = platform::toUtf16(absolute);
        if (place.explicitResource) {
            name += u'\\';
            name += platform::toUtf16(std::to_string(place.resource));
        }
        return TypeLibrary::create(readLibrary(file, place.resource), std::move(name));
    });
}

GUID const standardTypesId = {
    0x00020430, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

Reference<TypeLibrary> standardTypes() {
    // No file has an empty name.
    return sharedLibrary(std::u16string(), [] {
        std::span<std::byte const> const bytes(velkStandardTypesBegin, velkStandardTypesEnd);
        return TypeLibrary::create(readMsftLibrary(ByteView(bytes)));
    });
}

}  // namespace velk::typelib
