/// Property sets that are put together byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <windows.h>

#include <propidl.h>

namespace velk::test {

inline std::string number32(std::uint32_t number) {
    return {reinterpret_cast<char const*>(&number), sizeof number};
}
inline std::string number16(std::uint16_t number) {
    return {reinterpret_cast<char const*>(&number), sizeof number};
}
inline std::string idBytes(GUID const& id) {
    return {reinterpret_cast<char const*>(&id), sizeof id};
}

/// A property: a type and what follows it.
struct Property {
    std::uint32_t id;
    std::string bytes;
};

inline std::string section(std::vector<Property> const& properties) {
    std::string table, values;
    auto const begin = static_cast<std::uint32_t>(8 + 8 * properties.size());
    for (Property const& property : properties) {
        table +=
            number32(property.id) + number32(begin + static_cast<std::uint32_t>(values.size()));
        values += property.bytes;
    }
    auto const size = begin + static_cast<std::uint32_t>(values.size());
    return number32(size) + number32(static_cast<std::uint32_t>(properties.size())) + table +
           values;
}

inline std::string header(std::vector<GUID> const& sets, std::vector<std::string> const& sections) {
    std::string bytes = number16(0xfffe) + number16(0) + number32(0x20105) + idBytes(GUID{}) +
                        number32(static_cast<std::uint32_t>(sets.size()));
    auto offset = static_cast<std::uint32_t>(28 + 20 * sets.size());
    for (std::size_t i = 0; i < sets.size(); ++i) {
        bytes += idBytes(sets[i]) + number32(offset);
        offset += static_cast<std::uint32_t>(sections[i].size());
    }
    for (auto const& each : sections) bytes += each;
    return bytes;
}

inline std::string codePage(std::uint16_t page) {
    return number32(VT_I2) + number16(page) + number16(0);
}
/// A text as VT_LPSTR, padded.
inline std::string text(std::string bytes) {
    bytes += '\0';
    auto const size = number32(static_cast<std::uint32_t>(bytes.size()));
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return number32(VT_LPSTR) + size + bytes;
}

}  // namespace velk::test
