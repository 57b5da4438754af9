#include "com/utf.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace velk::com {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr char32_t firstHighSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t surrogatesEnd = 0xE000;
constexpr char32_t firstSupplementary = 0x10000;
constexpr char32_t lastCodePoint = 0x10FFFF;

bool isLowSurrogate(char32_t unit) noexcept {
    return unit >= firstLowSurrogate && unit < surrogatesEnd;
}
bool isSurrogate(char32_t unit) noexcept {
    return unit >= firstHighSurrogate && unit < surrogatesEnd;
}

void appendUtf8(std::string& out, char32_t point) {
    auto const trailing = [&](int shift) {
        out.push_back(static_cast<char>(0x80 | ((point >> shift) & 0x3F)));
    };
    if (point < 0x80) {
        out.push_back(static_cast<char>(point));
    } else if (point < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (point >> 6)));
        trailing(0);
    } else if (point < firstSupplementary) {
        out.push_back(static_cast<char>(0xE0 | (point >> 12)));
        trailing(6);
        trailing(0);
    } else {
        out.push_back(static_cast<char>(0xF0 | (point >> 18)));
        trailing(12);
        trailing(6);
        trailing(0);
    }
}

// Length of the sequence that a first byte begins, or 0.
std::size_t sequenceLength(unsigned char first) noexcept {
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    if (first >= 0xF0 && first < 0xF5) return 4;
    return 0;
}

// The smallest code point that needs a sequence of each length.
constexpr char32_t smallestOfLength[] = {0, 0, 0x80, 0x800, firstSupplementary};

std::optional<char32_t> decodeSequence(std::string_view bytes, std::size_t length) noexcept {
    auto point = static_cast<char32_t>(static_cast<unsigned char>(bytes[0]));
    if (length == 1) return point;
    point &= 0x7FU >> length;
    for (std::size_t i = 1; i < length; ++i) {
        auto const byte = static_cast<unsigned char>(bytes[i]);
        if ((byte & 0xC0) != 0x80) return std::nullopt;
        point = (point << 6) | (byte & 0x3FU);
    }
    if (point < smallestOfLength[length] || point > lastCodePoint || isSurrogate(point)) {
        return std::nullopt;
    }
    return point;
}

// Takes a sequence from the beginning; nothing, and nothing taken, for bytes
// that are none.
std::optional<char32_t> takeSequence(std::string_view& bytes) noexcept {
    std::size_t const length = sequenceLength(static_cast<unsigned char>(bytes[0]));
    if (length == 0 || length > bytes.size()) return std::nullopt;
    auto const point = decodeSequence(bytes, length);
    if (point) bytes.remove_prefix(length);
    return point;
}

void appendUtf16(std::basic_string<OLECHAR>& out, char32_t point) {
    if (point < firstSupplementary) {
        out.push_back(static_cast<OLECHAR>(point));
        return;
    }
    char32_t const offset = point - firstSupplementary;
    out.push_back(static_cast<OLECHAR>(firstHighSurrogate + (offset >> 10)));
    out.push_back(static_cast<OLECHAR>(firstLowSurrogate + (offset & 0x3FF)));
}

/// The text up to its first character that is not ASCII, with room for the rest.
template <typename Made, typename Character>
std::basic_string<Made> asciiAtTheFront(std::basic_string_view<Character> text) {
    auto const isOther = [](Character c) {
        return static_cast<std::make_unsigned_t<Character>>(c) >= 0x80;
    };
    auto const end = std::find_if(text.begin(), text.end(), isOther);
    std::basic_string<Made> out;
    out.reserve(text.size());
    out.assign(text.begin(), end);
    return out;
}

OLECHAR lowered(OLECHAR unit) noexcept {
    return unit >= 'A' && unit <= 'Z' ? static_cast<OLECHAR>(unit + ('a' - 'A')) : unit;
}

}  // namespace

std::string toUtf8(std::basic_string_view<OLECHAR> text) {
    // Most texts are ASCII, or begin so.
    std::string out = asciiAtTheFront<char>(text);
    for (std::size_t i = out.size(); i < text.size(); ++i) {
        char32_t point = text[i];
        if (isSurrogate(point)) {
            bool const pair =
                !isLowSurrogate(point) && i + 1 < text.size() && isLowSurrogate(text[i + 1]);
            if (pair) {
                point = firstSupplementary + ((point - firstHighSurrogate) << 10) +
                        (text[++i] - firstLowSurrogate);
            } else {
                point = replacementCharacter;
            }
        }
        appendUtf8(out, point);
    }
    return out;
}

std::optional<std::basic_string<OLECHAR>> fromUtf8(std::string_view bytes) {
    auto out = asciiAtTheFront<OLECHAR>(bytes);
    bytes.remove_prefix(out.size());
    while (!bytes.empty()) {
        auto const point = takeSequence(bytes);
        if (!point) return std::nullopt;
        appendUtf16(out, *point);
    }
    return out;
}

std::basic_string<OLECHAR> fromUtf8Leniently(std::string_view bytes) {
    auto out = asciiAtTheFront<OLECHAR>(bytes);
    bytes.remove_prefix(out.size());
    while (!bytes.empty()) {
        auto const point = takeSequence(bytes);
        if (!point) bytes.remove_prefix(1);
        appendUtf16(out, point.value_or(replacementCharacter));
    }
    return out;
}

bool equalIgnoringCase(std::basic_string_view<OLECHAR> left,
                       std::basic_string_view<OLECHAR> right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](OLECHAR a, OLECHAR b) { return lowered(a) == lowered(b); });
}

}  // namespace velk::com
