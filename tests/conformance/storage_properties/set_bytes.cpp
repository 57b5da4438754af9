#include "conformance/storage_properties/set_bytes.h"

#include <sstream>
#include <stdexcept>
#include <vector>

#include <windows.h>

#include <oaidl.h>

namespace velk::test {
namespace {

std::string paddedText(std::string bytes, std::size_t padding) {
    auto const size = numberBytes(bytes.size());
    bytes.resize((bytes.size() + padding - 1) / padding * padding);
    return size + bytes;
}

/// A property from its type on.
std::string valueBytes(std::string const& form, std::string const& value) {
    auto const number = [&] { return std::stoull(value); };
    if (form == "page") return numberBytes(VT_I2) + numberBytes(number());
    if (form == "i4") return numberBytes(VT_I4) + numberBytes(number());
    if (form == "text") return numberBytes(VT_LPSTR) + paddedText(value + '\0', 4);
    if (form == "lpstr") return numberBytes(VT_LPSTR) + paddedText(bytesOfHex(value) + '\0', 4);
    if (form == "pad") return valueBytes("text", std::string(number(), 'p'));
    if (form == "hex") return bytesOfHex(value);
    auto const name = value.substr(value.find('=') + 1) + '\0';
    if (form == "names") return numberBytes(1) + numberBytes(number()) + paddedText(name, 4);
    throw std::runtime_error("no such form of a property: " + form);
}

std::string sectionBytes(std::string const& notation) {
    std::string table, values;
    std::vector<std::string> properties;
    std::istringstream all(notation);
    for (std::string each; std::getline(all, each, ';');) properties.push_back(each);
    for (std::string const& each : properties) {
        std::istringstream property(each);
        unsigned id = 0;
        char colon = 0;
        std::string form, value;
        property >> id >> colon >> form >> std::ws;
        std::getline(property, value);
        table += numberBytes(id) + numberBytes(8 + 8 * properties.size() + values.size());
        values += valueBytes(form, value);
    }
    return numberBytes(8 + table.size() + values.size()) + numberBytes(properties.size()) + table +
           values;
}

std::string formatId(char letter) {
    switch (letter) {
        case 'S':
            return bytesOfHex("e0859ff2f94f6810ab9108002b27b3d9");
        case 'D':
            return bytesOfHex("02d5cdd59c2e1b10939708002b2cf9ae");
        case 'U':
            return bytesOfHex("05d5cdd59c2e1b10939708002b2cf9ae");
        default:
            return bytesOfHex("37be068d341221439091929394959697");
    }
}

void damage(std::string& bytes, std::string const& notation) {
    std::istringstream all(notation);
    for (std::string each; all >> each;) {
        if (each == "cut") {
            std::size_t size = 0;
            all >> size;
            bytes.resize(size);
            continue;
        }
        auto const put = bytesOfHex(each.substr(each.find('=') + 1));
        bytes.replace(std::stoul(each.substr(1)), put.size(), put);
    }
}

}  // namespace

std::string numberBytes(unsigned long long number, std::size_t size) {
    std::string bytes;
    for (std::size_t i = 0; i < size; ++i) bytes += static_cast<char>(number >> (8 * i));
    return bytes;
}

std::string bytesOfHex(std::string const& digits) {
    std::string bytes, byte;
    for (char const digit : digits) {
        if (digit != ' ') byte += digit;
        if (byte.size() < 2) continue;
        bytes += static_cast<char>(std::stoul(byte, nullptr, 16));
        byte.clear();
    }
    return bytes;
}

std::string setBytes(std::string const& notation) {
    std::string list, sections;
    std::size_t at = 0, count = 0;
    for (char const letter : notation) count += letter == '{' ? 1 : 0;
    if (count == 0) return {};
    for (std::size_t end = 0; at < notation.size() && notation[at] != ' '; at = end + 1) {
        end = notation.find('}', at);
        list += formatId(notation[at]) + numberBytes(28 + 20 * count + sections.size());
        sections += sectionBytes(notation.substr(at + 2, end - at - 2));
    }
    auto bytes = numberBytes(0xfffe) + numberBytes(0x20105) + std::string(16, '\0') +
                 numberBytes(count) + list + sections;
    damage(bytes, notation.substr(at));
    return bytes;
}

}  // namespace velk::test
