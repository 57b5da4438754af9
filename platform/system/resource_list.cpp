#include "platform/system/resource_list.h"

#include <cstring>

#include <winbase.h>

#include "platform/system/utf16.h"

namespace velk::platform {
namespace {

using Bytes = std::span<std::byte const>;

constexpr std::size_t smallestHeader = 32;
constexpr std::uint16_t numberMark = 0xFFFF;

template <typename Number>
std::optional<Number> readNumber(Bytes bytes, std::size_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(Number)) return std::nullopt;
    Number number;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
}

/// Reads a type or name at `offset` and moves `offset` behind it.
std::optional<ResourceName> readName(Bytes header, std::size_t& offset) {
    auto unit = readNumber<std::uint16_t>(header, offset);
    if (unit == numberMark) {
        auto const number = readNumber<std::uint16_t>(header, offset + 2);
        offset += 4;
        return number ? std::optional(ResourceName(*number)) : std::nullopt;
    }
    std::u16string text;
    while (unit && *unit != 0) {
        text.push_back(static_cast<char16_t>(*unit));
        offset += 2;
        unit = readNumber<std::uint16_t>(header, offset);
    }
    offset += 2;
    return unit ? std::optional(ResourceName(text)) : std::nullopt;
}

std::size_t roundedUp(std::size_t size) {
    return (size + 3) & ~std::size_t{3};
}

}  // namespace

ResourceName ResourceName::fromPublished(LPCWSTR published) {
    if (IS_INTRESOURCE(published)) {
        return ResourceName(static_cast<std::uint16_t>(reinterpret_cast<ULONG_PTR>(published)));
    }
    std::u16string_view const text = published;
    if (text.empty() || text[0] != u'#') return ResourceName(text);
    std::uint32_t number = 0;
    for (char16_t const digit : text.substr(1)) {
        number = number * 10 + (digit - u'0');
        if (digit < u'0' || digit > u'9' || number > 0xFFFF) return ResourceName(text);
    }
    return text.size() > 1 ? ResourceName(static_cast<std::uint16_t>(number)) : ResourceName(text);
}

bool ResourceName::operator==(ResourceName const& other) const noexcept {
    return number == other.number && equalNoAsciiCase(text, other.text);
}

std::optional<Bytes> dataOfEntry(Bytes entry) {
    auto const dataSize = readNumber<std::uint32_t>(entry, 0);
    auto const headerSize = readNumber<std::uint32_t>(entry, 4);
    if (!dataSize || !headerSize || *headerSize < smallestHeader) return std::nullopt;
    if (*headerSize > entry.size() || *dataSize > entry.size() - *headerSize) return std::nullopt;
    return entry.subspan(*headerSize, *dataSize);
}

ResourceSearch findResource(Bytes list, ResourceName const& type, ResourceName const& name) {
    ResourceSearch search;
    while (auto const data = dataOfEntry(list)) {
        auto const headerSize = static_cast<std::size_t>(data->data() - list.data());
        std::size_t const size = headerSize + data->size();
        std::size_t offset = 8;
        auto const entryType = readName(list.first(headerSize), offset);
        auto const entryName = readName(list.first(headerSize), offset);
        if (!entryType || !entryName) break;
        // The empty first entry has type 0, which no one may ask for.
        if (*entryType == type && !(type == ResourceName())) {
            search.outcome = ResourceSearch::Outcome::noSuchName;
            if (*entryName == name) return {ResourceSearch::Outcome::found, list.first(size)};
        }
        if (roundedUp(size) >= list.size()) break;
        list = list.subspan(roundedUp(size));
    }
    return search;
}

}  // namespace velk::platform
