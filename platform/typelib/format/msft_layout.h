/// Where things stand in a library of the MSFT format. All numbers are
/// little-endian, offsets of fields are in bytes from the start of their record.
#pragma once

#include <cstddef>

#include "windef.h"

namespace velk::typelib::msft {

constexpr DWORD signature = 0x5446534d;       // "MSFT"
constexpr DWORD olderSignature = 0x47544c53;  // "SLTG", a format of the 16-bit tools
constexpr DWORD formatVersion = 0x00010002;
constexpr DWORD absent = 0xffffffff;

namespace header {
constexpr std::size_t version = 0x04;
constexpr std::size_t guid = 0x08;
constexpr std::size_t textLcid = 0x0c;  // of the code page that texts are stored in
constexpr std::size_t lcid = 0x10;      // of the library
constexpr std::size_t systemAndPresence = 0x14;
constexpr std::size_t libraryVersion = 0x18;
constexpr std::size_t flags = 0x1c;
constexpr std::size_t typeCount = 0x20;
constexpr std::size_t helpString = 0x24;
constexpr std::size_t helpStringContext = 0x28;
constexpr std::size_t helpContext = 0x2c;
constexpr std::size_t nameCount = 0x30;
constexpr std::size_t nameCharacters = 0x34;
constexpr std::size_t name = 0x38;
constexpr std::size_t helpFile = 0x3c;
constexpr std::size_t customData = 0x40;
constexpr std::size_t dispatch = 0x4c;
constexpr std::size_t size = 0x54;
constexpr DWORD systemMask = 0x0f;
constexpr DWORD helpModulePresent = 0x100;  // one more field follows the header
}  // namespace header

/// Segments in the order of the directory, whose entries have 16 bytes.
enum Segment {
    typeTable,
    importedTypes,
    importedFiles,
    references,
    guidHash,
    guids,
    nameHash,
    names,
    strings,
    typeDescriptions,
    arrayDescriptions,
    values,
    customDataLinks,
    unused14,
    unused15,
    segmentCount
};
constexpr std::size_t directoryEntrySize = 16;

namespace type {
constexpr std::size_t size = 100;
constexpr std::size_t kindAndAlignment = 0x00;
constexpr std::size_t members = 0x04;
constexpr std::size_t counts = 0x18;
constexpr std::size_t guid = 0x2c;
constexpr std::size_t flags = 0x30;
constexpr std::size_t name = 0x34;
constexpr std::size_t version = 0x38;
constexpr std::size_t helpString = 0x3c;
constexpr std::size_t helpStringContext = 0x40;
constexpr std::size_t helpContext = 0x44;
constexpr std::size_t customData = 0x48;
constexpr std::size_t implementedCount = 0x4c;
constexpr std::size_t vtableSize = 0x4e;
constexpr std::size_t instanceSize = 0x50;
constexpr std::size_t detail = 0x54;     // base, alias, module name or first reference
constexpr std::size_t inherited = 0x58;  // low word levels, high word functions
constexpr DWORD kindMask = 0x0f;
constexpr unsigned alignmentShift = 11;
constexpr DWORD alignmentMask = 0x1f;
}  // namespace type

namespace function {
constexpr std::size_t size = 0x18;
constexpr std::size_t result = 0x04;
constexpr std::size_t flags = 0x08;
constexpr std::size_t vtableOffset = 0x0c;
constexpr std::size_t kinds = 0x10;
constexpr std::size_t parameterCount = 0x14;
constexpr std::size_t optionalCount = 0x16;
constexpr std::size_t extras = 0x18;
constexpr std::size_t parameterSize = 12;
constexpr DWORD hasDefaults = 0x1000;
constexpr DWORD entryIsOrdinal = 0x2000;
// Extra fields, counted in double words; a record ends where it has no more.
enum Extra {
    helpContext,
    helpString,
    entry,
    unused3,
    unused4,
    helpStringContext,
    customData,
    parameterCustomData
};
}  // namespace function

namespace variable {
constexpr std::size_t size = 0x14;
constexpr std::size_t type = 0x04;
constexpr std::size_t flags = 0x08;
constexpr std::size_t kind = 0x0c;
constexpr std::size_t value = 0x10;
constexpr std::size_t extras = 0x14;
enum Extra { helpContext, helpString, unused2, customData, helpStringContext };
}  // namespace variable

namespace reference {
constexpr std::size_t size = 16;
constexpr std::size_t type = 0;
constexpr std::size_t flags = 4;
constexpr std::size_t customData = 8;
constexpr std::size_t next = 12;
}  // namespace reference

namespace importedType {
constexpr std::size_t size = 12;
constexpr std::size_t flags = 0;
constexpr std::size_t file = 4;
constexpr std::size_t guidOrIndex = 8;
constexpr DWORD byGuid = 0x00010000;
}  // namespace importedType

namespace importedFile {
constexpr std::size_t guid = 0;
constexpr std::size_t lcid = 4;
constexpr std::size_t majorVersion = 8;
constexpr std::size_t minorVersion = 10;
constexpr std::size_t nameLength = 12;  // times four
constexpr std::size_t name = 14;
}  // namespace importedFile

constexpr std::size_t guidEntrySize = 24;
constexpr std::size_t nameLength = 8;
constexpr std::size_t nameText = 12;
constexpr std::size_t typeDescriptionSize = 8;
constexpr std::size_t customDataLinkSize = 12;

}  // namespace velk::typelib::msft
