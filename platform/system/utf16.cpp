#include "platform/system/utf16.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace velk::platform {
namespace {

constexpr char32_t replacement = 0xFFFD;

bool isHighSurrogate(char16_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

struct Decoded {
    char32_t point;
    std::size_t length;  // 0: the first byte starts no valid sequence
};

Decoded decodeUtf8(std::string_view bytes) {
    auto const byte = [&](std::size_t at) { return static_cast<std::uint8_t>(bytes[at]); };
    auto const first = byte(0);
    if (first < 0x80) return {first, 1};
    std::size_t const length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || bytes.size() < length) return {0, 0};
    char32_t point = first & (0x7F >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80) return {0, 0};
        point = (point << 6) | (byte(at) & 0x3F);
    }
    static constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    bool const surrogate = point >= 0xD800 && point <= 0xDFFF;
    if (point < smallest[length] || point > 0x10FFFF || surrogate) return {0, 0};
    return {point, length};
}

void appendUtf8(std::string& bytes, char32_t point) {
    auto const put = [&](char32_t value) { bytes.push_back(static_cast<char>(value)); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | (point >> 6));
        put(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        put(0xE0 | (point >> 12));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    } else {
        put(0xF0 | (point >> 18));
        put(0x80 | ((point >> 12) & 0x3F));
        put(0x80 | ((point >> 6) & 0x3F));
        put(0x80 | (point & 0x3F));
    }
}

}  // namespace

std::u16string toUtf16(std::string_view bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    while (!bytes.empty()) {
        auto const [point, length] = decodeUtf8(bytes);
        if (length == 0) {
            text.push_back(static_cast<char16_t>(0xDC00 + static_cast<std::uint8_t>(bytes[0])));
            bytes.remove_prefix(1);
            continue;
        }
        if (point >= 0x10000) {
            text.push_back(static_cast<char16_t>(0xD800 + ((point - 0x10000) >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + ((point - 0x10000) & 0x3FF)));
        } else {
            text.push_back(static_cast<char16_t>(point));
        }
        bytes.remove_prefix(length);
    }
    return text;
}

std::string toBytes(std::u16string_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        char16_t const unit = text[at];
        bool const pair =
            isHighSurrogate(unit) && at + 1 < text.size() && isLowSurrogate(text[at + 1]);
        if (pair) {
            appendUtf8(bytes, 0x10000 + ((char32_t{unit} - 0xD800) << 10) + (text[++at] - 0xDC00));
        } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
            bytes.push_back(static_cast<char>(unit - 0xDC00));
        } else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
            appendUtf8(bytes, replacement);
        } else {
            appendUtf8(bytes, unit);
        }
    }
    return bytes;
}

std::optional<std::string> toFileName(std::u16string_view text) {
    auto bytes = toBytes(text);
    return toUtf16(bytes) == text ? std::optional(std::move(bytes)) : std::nullopt;
}

bool equalNoAsciiCase(std::u16string_view left, std::u16string_view right) noexcept {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t one, char16_t other) { return upperAscii(one) == upperAscii(other); });
}

}  // namespace velk::platform
