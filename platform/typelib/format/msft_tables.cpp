#include "platform/typelib/format/msft_tables.h"

#include <algorithm>
#include <array>

#include "platform/system/code_page.h"

namespace velk::typelib::msft {
namespace {

// Pointers to pointers and arrays of arrays deeper than this occur in damaged
// files only.
constexpr int deepestType = 64;
constexpr std::size_t mostDimensions = 60;

// A stored basic type has this bit, its type in the low bits.
constexpr DWORD basicType = 0x80000000;
constexpr DWORD typeMask = 0x0fff;

// Whether a type says more than its number: what it points at, or which type
// it is. Readers follow that without asking.
constexpr bool needsDetail(VARTYPE type) {
    return type == VT_PTR || type == VT_SAFEARRAY || type == VT_CARRAY || type == VT_USERDEFINED;
}

struct LanguagePage {
    WORD primaryLanguage;
    unsigned page;
};

// Texts are stored in the code page of their library's locale. Primary languages and the code pages
// that their systems use; all others write in Latin letters of the Western page.
constexpr std::array languagePages = {
    LanguagePage{0x01, 1256}, LanguagePage{0x02, 1251}, LanguagePage{0x04, 936},
    LanguagePage{0x05, 1250}, LanguagePage{0x08, 1253}, LanguagePage{0x0d, 1255},
    LanguagePage{0x0e, 1250}, LanguagePage{0x11, 932},  LanguagePage{0x12, 949},
    LanguagePage{0x15, 1250}, LanguagePage{0x18, 1250}, LanguagePage{0x19, 1251},
    LanguagePage{0x1a, 1250}, LanguagePage{0x1b, 1250}, LanguagePage{0x1c, 1250},
    LanguagePage{0x1e, 874},  LanguagePage{0x1f, 1254}, LanguagePage{0x22, 1251},
    LanguagePage{0x23, 1251}, LanguagePage{0x24, 1250}, LanguagePage{0x25, 1257},
    LanguagePage{0x26, 1257}, LanguagePage{0x27, 1257}, LanguagePage{0x29, 1256},
    LanguagePage{0x2a, 1258}, LanguagePage{0x2f, 1251}};

constexpr LCID chineseTaiwan = 0x0404;
constexpr LCID chineseHongKong = 0x0c04;

unsigned pageOf(LCID lcid) {
    if ((lcid & 0xffff) == chineseTaiwan || (lcid & 0xffff) == chineseHongKong) return 950;
    auto const language = PRIMARYLANGID(lcid);
    auto const entry = std::find_if(languagePages.begin(), languagePages.end(),
                                    [&](auto const& e) { return e.primaryLanguage == language; });
    return entry == languagePages.end() ? 1252 : entry->page;
}

}  // namespace

Tables::Tables(ByteView file, LibraryModel& model) : file_(file), model_(model) {
    require(file.u32(header::version) == formatVersion, TYPE_E_UNSUPFORMAT);
    textLcid_ = file.u32(header::textLcid);

    std::size_t position = header::size;
    if (file.u32(header::systemAndPresence) & header::helpModulePresent) position += 4;
    std::size_t const count = file.u32(header::typeCount);
    require(count <= file.size() / type::size, TYPE_E_INVDATAREAD);
    readDirectory(position + 4 * count);
    readTypePositions(position, count);
    customItemsLeft_ = file.size() / customDataLinkSize;
    implementedLeft_ = file.size() / reference::size;
    textLeft_ = 4 * file.size();
}

void Tables::readDirectory(std::size_t position) {
    for (auto& part : segments_) {
        DWORD const offset = file_.u32(position);
        DWORD const length = file_.u32(position + 4);
        position += directoryEntrySize;
        if (offset == absent || length == 0 || length == absent) continue;
        part = file_.part(offset, length);
    }
}

void Tables::readTypePositions(std::size_t position, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        DWORD const offset = file_.u32(position + 4 * i);
        segment(typeTable).part(offset, type::size);
        typePositions_.push_back(offset);
        // Two types at one place would make references ambiguous.
        require(typeIndexes_.emplace(offset, i).second, TYPE_E_INVDATAREAD);
    }
}

ByteView Tables::typeRecord(std::size_t index) const {
    return segment(typeTable).part(typePositions_.at(index), type::size);
}

std::u16string Tables::decode(std::string_view bytes) {
    require(bytes.size() <= textLeft_, TYPE_E_INVDATAREAD);
    textLeft_ -= bytes.size();
    return platform::CodePage(pageOf(textLcid_)).toText(bytes);
}

Text Tables::name(DWORD offset) {
    if (offset == absent) return {};
    auto const known = names_.find(offset);
    if (known != names_.end()) return known->second;
    auto const& table = segment(names);
    std::size_t const length = table.u8(std::size_t{offset} + nameLength);
    Text const text = keepBytes(table.text(std::size_t{offset} + nameText, length));
    return names_.emplace(offset, text).first->second;
}

Text Tables::string(DWORD offset) {
    if (offset == absent) return {};
    auto const known = strings_.find(offset);
    if (known != strings_.end()) return known->second;
    auto const& table = segment(strings);
    Text const text = keepBytes(table.text(std::size_t{offset} + 2, table.u16(offset)));
    return strings_.emplace(offset, text).first->second;
}

GUID Tables::guid(DWORD offset) const {
    return offset == absent ? GUID_NULL : segment(guids).guid(offset);
}

HREFTYPE Tables::reference(DWORD stored) const {
    if (stored == absent) return noReference;
    if ((stored & 3) == 0) {
        auto const found = typeIndexes_.find(stored);
        require(found != typeIndexes_.end(), TYPE_E_INVDATAREAD);
        return makeReference(ReferenceKind::local, found->second);
    }
    std::size_t const index = (stored & ~DWORD{3}) / importedType::size;
    require((stored & 3) == 1 && index < model_.importedTypes.size(), TYPE_E_INVDATAREAD);
    return makeReference(ReferenceKind::imported, index);
}

std::span<ImplementedModel> Tables::implemented(DWORD offset, std::size_t count) {
    auto const& table = segment(references);
    require(count <= implementedLeft_, TYPE_E_INVDATAREAD);
    implementedLeft_ -= count;
    auto const list = model_.makeArray<ImplementedModel>(count);
    for (auto& entry : list) {
        entry.reference = reference(table.u32(std::size_t{offset} + reference::type));
        entry.flags = table.i32(std::size_t{offset} + reference::flags);
        entry.custom = customData(table.u32(std::size_t{offset} + reference::customData));
        offset = table.u32(std::size_t{offset} + reference::next);
    }
    return list;
}

TYPEDESC Tables::type(DWORD stored) {
    return typeAtDepth(stored, 0).description;
}

Tables::NestedType Tables::typeAtDepth(DWORD stored, int depth) {
    NestedType nested;
    if (stored == absent) {
        nested.description.vt = VT_VOID;
    } else if (stored & basicType) {
        nested.description.vt = static_cast<VARTYPE>(stored & typeMask);
        require(!needsDetail(nested.description.vt), TYPE_E_INVDATAREAD);
    } else {
        auto const known = types_.find(stored);
        nested = known != types_.end() ? known->second : readType(stored, depth);
        require(depth + nested.height < deepestType, TYPE_E_INVDATAREAD);
        types_.emplace(stored, nested);
    }
    return nested;
}

// A description of eight bytes: its type, and what it points at or refers to.
Tables::NestedType Tables::readType(DWORD offset, int depth) {
    require(depth < deepestType, TYPE_E_INVDATAREAD);
    auto const& table = segment(typeDescriptions);
    NestedType nested;
    auto& description = nested.description;
    description.vt = table.u16(offset) & typeMask;
    DWORD const detail = table.u32(std::size_t{offset} + 4);
    switch (description.vt) {
        case VT_PTR:
        case VT_SAFEARRAY: {
            auto const target = typeAtDepth(detail, depth + 1);
            description.lptdesc = model_.makeOne<TYPEDESC>();
            *description.lptdesc = target.description;
            nested.height = target.height + 1;
            break;
        }
        case VT_CARRAY:
            return readArray(detail, depth + 1);
        case VT_USERDEFINED:
            description.hreftype = reference(detail);
            break;
        default:
            break;
    }
    return nested;
}

Tables::NestedType Tables::readArray(DWORD offset, int depth) {
    auto const& table = segment(arrayDescriptions);
    auto const element = typeAtDepth(table.u32(offset), depth);
    std::size_t const dimensions = table.u16(std::size_t{offset} + 4);
    require(dimensions <= mostDimensions, TYPE_E_INVDATAREAD);
    auto const bounds = table.part(std::size_t{offset} + 8, dimensions * sizeof(SAFEARRAYBOUND));
    std::size_t const words =
        (sizeof(ARRAYDESC) + dimensions * sizeof(SAFEARRAYBOUND)) / sizeof(ULONGLONG) + 1;
    auto* array = reinterpret_cast<ARRAYDESC*>(model_.makeArray<ULONGLONG>(words).data());
    array->tdescElem = element.description;
    array->cDims = static_cast<USHORT>(dimensions);
    for (std::size_t i = 0; i < dimensions; ++i) {
        array->rgbounds[i].cElements = bounds.u32(8 * i);
        array->rgbounds[i].lLbound = bounds.i32(8 * i + 4);
    }
    NestedType nested;
    nested.description.vt = VT_CARRAY;
    nested.description.lpadesc = array;
    nested.height = element.height + 1;
    return nested;
}

void Tables::readImports() {
    auto const& typeTable = segment(importedTypes);
    auto const& fileTable = segment(importedFiles);
    auto const types = model_.makeArray<ImportedType>(typeTable.size() / importedType::size);
    std::unordered_map<DWORD, std::size_t> libraries;
    std::vector<ImportedLibrary> found;
    for (std::size_t i = 0; i < types.size(); ++i) {
        std::size_t const at = i * importedType::size;
        DWORD const file = typeTable.u32(at + importedType::file);
        auto const [known, isNew] = libraries.emplace(file, found.size());
        if (isNew) {
            auto& library = found.emplace_back();
            library.id = guid(fileTable.u32(std::size_t{file} + importedFile::guid));
            library.lcid = fileTable.u32(std::size_t{file} + importedFile::lcid);
            library.majorVersion = fileTable.u16(std::size_t{file} + importedFile::majorVersion);
            library.minorVersion = fileTable.u16(std::size_t{file} + importedFile::minorVersion);
            std::size_t const length =
                fileTable.u16(std::size_t{file} + importedFile::nameLength) >> 2;
            library.file =
                keepBytes(fileTable.text(std::size_t{file} + importedFile::name, length));
        }
        types[i].library = known->second;
        types[i].byId = typeTable.u32(at + importedType::flags) & importedType::byGuid;
        DWORD const which = typeTable.u32(at + importedType::guidOrIndex);
        if (types[i].byId) types[i].id = guid(which);
        types[i].index = which;
    }
    model_.importedTypes = types;
    model_.importedLibraries = model_.makeArray<ImportedLibrary>(found.size());
    std::copy(found.begin(), found.end(), model_.importedLibraries.begin());
}

}  // namespace velk::typelib::msft
