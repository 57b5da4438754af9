// The library of the standard types, carried in this module.

#include "platform/typelib/library_cache.h"
#include "platform/typelib/library_source.h"
#include "platform/typelib/msft_reader.h"

// The compiled library, put between these two by the build.
extern "C" __attribute__((visibility("hidden"))) std::byte const velkStandardTypesBegin[];
extern "C" __attribute__((visibility("hidden"))) std::byte const velkStandardTypesEnd[];

namespace velk::typelib {

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
