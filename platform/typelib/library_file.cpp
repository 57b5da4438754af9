// Libraries from files.

#include <filesystem>
#include <vector>

#include <sys/stat.h>

#include "platform/system/regular_file.h"
#include "platform/system/resource_section.h"
#include "platform/system/utf16.h"
#include "platform/typelib/library_cache.h"
#include "platform/typelib/library_source.h"
#include "platform/typelib/msft_reader.h"
#include "platform/typelib/pe_resources.h"

namespace velk::typelib {
namespace {

constexpr WORD usualResource = 1;

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
    LibraryPlace place{platform::toBytes(path)};
    std::size_t const mark = place.file.find_last_of('\\');
    if (mark == std::string::npos || isRegularFile(place.file)) return place;
    std::string const number = place.file.substr(mark + 1);
    bool const digits = !number.empty() && number.size() <= 5 &&
                        number.find_first_not_of("0123456789") == std::string::npos;
    if (!digits || std::stoul(number) > 0xffff) return place;
    return {place.file.substr(0, mark), static_cast<WORD>(std::stoul(number)), true};
}

std::vector<std::byte> bytesOf(std::string const& file) {
    platform::RegularFile const stream(file);
    require(stream.isOpen(), TYPE_E_CANTLOADLIBRARY);
    std::vector<std::byte> bytes(stream.size());
    require(stream.read(0, bytes.data(), bytes.size()), TYPE_E_IOERROR);
    return bytes;
}

std::unique_ptr<LibraryModel const> readLibrary(LibraryPlace const& place) {
    if (platform::isSharedObjectFile(place.file)) {
        auto const resource = platform::readResource(place.file, platform::ResourceName(u"TYPELIB"),
                                                     platform::ResourceName(place.resource));
        require(resource.has_value(), TYPE_E_CANTLOADLIBRARY);
        return readMsftLibrary(ByteView(*resource));
    }
    auto const bytes = bytesOf(place.file);
    ByteView const view(bytes);
    if (!isPortableExecutable(view)) return readMsftLibrary(view);
    auto const resource = portableResource(view, u"TYPELIB", place.resource);
    require(resource.has_value(), TYPE_E_CANTLOADLIBRARY);
    return readMsftLibrary(*resource);
}

// A file that was replaced is another one, even while the old one is in use.
std::u16string keyOf(LibraryPlace const& place, std::string const& path) {
    struct stat status {};
    require(stat(place.file.c_str(), &status) == 0, TYPE_E_CANTLOADLIBRARY);
    std::string const key = path + "\n" + std::to_string(place.resource) + "\n" +
                            std::to_string(status.st_ino) + "\n" + std::to_string(status.st_size) +
                            "\n" + std::to_string(status.st_mtim.tv_sec) + "." +
                            std::to_string(status.st_mtim.tv_nsec);
    return platform::toUtf16(key);
}

}  // namespace

Reference<TypeLibrary> loadLibraryFile(std::u16string_view path) {
    auto const place = placeOf(path);
    require(isRegularFile(place.file), TYPE_E_CANTLOADLIBRARY);
    std::error_code error;
    auto const absolute = std::filesystem::canonical(place.file, error).string();
    if (error == std::errc::not_enough_memory) throw std::bad_alloc();
    require(!error, TYPE_E_CANTLOADLIBRARY);
    return sharedLibrary(keyOf(place, absolute), [&] {
        auto name = platform::toUtf16(absolute);
        if (place.explicitResource) {
            name += u'\\';
            name += platform::toUtf16(std::to_string(place.resource));
        }
        return TypeLibrary::create(readLibrary(place), std::move(name));
    });
}

}  // namespace velk::typelib
