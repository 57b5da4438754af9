#include "platform/storage/properties/stream_name.h"

#include <algorithm>
#include <array>
#include <bitset>

#include "platform/system/utf16.h"

namespace velk::platform::storage {
namespace {

constexpr std::u16string_view summaryName = u"\5SummaryInformation";
constexpr std::u16string_view documentSummaryName = u"\5DocumentSummaryInformation";

// Five bits of the format id are one character, the lowest bits of the first
// byte first; 26 characters have two bits more than there are.
constexpr std::u16string_view digits = u"abcdefghijklmnopqrstuvwxyz012345";
constexpr std::size_t bitsOfDigit = 5;
constexpr std::size_t digitCount = 26;

using Bits = std::bitset<digitCount * bitsOfDigit>;

std::optional<std::size_t> digitOf(char16_t unit) {
    auto const lower =
        unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
    std::size_t const at = digits.find(lower);
    return at == std::u16string_view::npos ? std::nullopt : std::optional(at);
}

}  // namespace

std::u16string streamNameOf(REFFMTID formatId) {
    if (formatId == FMTID_SummaryInformation) return std::u16string(summaryName);
    if (formatId == FMTID_DocSummaryInformation || formatId == FMTID_UserDefinedProperties) {
        return std::u16string(documentSummaryName);
    }
    auto const* const bytes = reinterpret_cast<BYTE const*>(&formatId);
    Bits bits;
    for (std::size_t i = 0; i < sizeof(FMTID) * 8; ++i) bits[i] = (bytes[i / 8] >> i % 8 & 1) != 0;
    std::u16string name(1, setNameMark);
    for (std::size_t i = 0; i < digitCount; ++i) {
        std::size_t const first = i * bitsOfDigit;
        std::size_t digit = 0;
        for (std::size_t bit = 0; bit < bitsOfDigit; ++bit) digit |= bits[first + bit] << bit;
        // A character that begins with a byte is a capital one.
        name += first % 8 == 0 ? upperAscii(digits[digit]) : digits[digit];
    }
    return name;
}

std::optional<FMTID> formatIdOf(std::u16string_view streamName) {
    if (equalNoAsciiCase(streamName, summaryName)) return FMTID_SummaryInformation;
    if (equalNoAsciiCase(streamName, documentSummaryName)) return FMTID_DocSummaryInformation;
    if (streamName.size() != digitCount + 1 || streamName[0] != setNameMark) return {};
    Bits bits;
    for (std::size_t i = 0; i < digitCount; ++i) {
        auto const digit = digitOf(streamName[i + 1]);
        if (!digit) return {};
        for (std::size_t bit = 0; bit < bitsOfDigit; ++bit) {
            bits[i * bitsOfDigit + bit] = (*digit >> bit & 1) != 0;
        }
    }
    constexpr std::size_t idBits = sizeof(FMTID) * 8;
    std::array<BYTE, sizeof(FMTID)> bytes{};
    for (std::size_t i = 0; i < bits.size(); ++i) {
        if (!bits[i]) continue;
        if (i >= idBits) return {};
        bytes[i / 8] = static_cast<BYTE>(bytes[i / 8] | 1U << i % 8);
    }
    FMTID id;
    std::ranges::copy(bytes, reinterpret_cast<BYTE*>(&id));
    return id;
}

}  // namespace velk::platform::storage
