#include "com/registration/script_data.h"

#include <cstdint>
#include <limits>

#include "com/utf.h"

namespace velk::com {
namespace {

void appendUnit(std::vector<BYTE>& bytes, OLECHAR unit) {
    bytes.push_back(static_cast<BYTE>(unit & 0xFF));
    bytes.push_back(static_cast<BYTE>(unit >> 8));
}

std::vector<BYTE> withNul(TextView text) {
    std::vector<BYTE> bytes;
    bytes.reserve((text.size() + 1) * sizeof(OLECHAR));
    for (OLECHAR const unit : text) appendUnit(bytes, unit);
    appendUnit(bytes, 0);
    return bytes;
}

std::optional<unsigned> digitValue(OLECHAR unit, unsigned base) noexcept {
    unsigned value = base;
    if (unit >= '0' && unit <= '9') value = unit - OLECHAR{'0'};
    if (unit >= 'a' && unit <= 'f') value = unit - OLECHAR{'a'} + 10U;
    if (unit >= 'A' && unit <= 'F') value = unit - OLECHAR{'A'} + 10U;
    return value < base ? std::optional(value) : std::nullopt;
}

std::optional<RegistryScriptData> readText(TextView text) {
    return RegistryScriptData{REG_SZ, withNul(text)};
}

std::optional<RegistryScriptData> readExpandableText(TextView text) {
    return RegistryScriptData{REG_EXPAND_SZ, withNul(text)};
}

std::optional<RegistryScriptData> readNumber(TextView text) {
    unsigned base = 10;
    TextView const prefix = text.substr(0, 2);
    if (equalIgnoringCase(prefix, OLESTR("0x")) || equalIgnoringCase(prefix, OLESTR("&H"))) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty()) return std::nullopt;
    std::uint64_t value = 0;
    for (OLECHAR const unit : text) {
        auto const digit = digitValue(unit, base);
        if (!digit) return std::nullopt;
        value = value * base + *digit;
        if (value > std::numeric_limits<std::uint32_t>::max()) return std::nullopt;
    }
    RegistryScriptData result{REG_DWORD, {}};
    for (int shift = 0; shift < 32; shift += 8) {
        result.bytes.push_back(static_cast<BYTE>(value >> shift));
    }
    return result;
}

std::optional<RegistryScriptData> readBytes(TextView text) {
    if (text.size() % 2 != 0) return std::nullopt;
    RegistryScriptData result{REG_BINARY, {}};
    for (std::size_t i = 0; i < text.size(); i += 2) {
        auto const high = digitValue(text[i], 16);
        auto const low = digitValue(text[i + 1], 16);
        if (!high || !low) return std::nullopt;
        result.bytes.push_back(static_cast<BYTE>(*high << 4 | *low));
    }
    return result;
}

// An empty text would end the list where the registry stores it, so none is
// kept; the last text may leave its "\0" out.
std::optional<RegistryScriptData> readList(TextView text) {
    RegistryScriptData result{REG_MULTI_SZ, {}};
    static constexpr OLECHAR separator[] = {'\\', '0'};
    while (!text.empty()) {
        std::size_t const end = text.find(TextView(separator, 2));
        TextView const part = text.substr(0, end);
        if (!part.empty()) {
            auto const bytes = withNul(part);
            result.bytes.insert(result.bytes.end(), bytes.begin(), bytes.end());
        }
        text.remove_prefix(end == TextView::npos ? text.size() : end + 2);
    }
    appendUnit(result.bytes, 0);
    return result;
}

constexpr ScriptDataReader readers[] = {
    {'s', "a text", readText},
    {'e', "a text", readExpandableText},
    {'d', "a number from 0 to 4294967295 (decimal, or hexadecimal after 0x or &H)", readNumber},
    {'b', "pairs of hexadecimal digits", readBytes},
    {'m', "a list of texts", readList}};

}  // namespace

ScriptDataReader const* findDataReader(TextView type) noexcept {
    for (auto const& reader : readers) {
        if (equalIgnoringCase(type, TextView(&reader.letter, 1))) return &reader;
    }
    return nullptr;
}

}  // namespace velk::com
