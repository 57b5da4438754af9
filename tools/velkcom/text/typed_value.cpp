#include "text/typed_value.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <utility>

#include "com/error.h"
#include "com/utf.h"

namespace velk::velkcom {
namespace {

using com::Variant;

std::basic_string<OLECHAR> utf16(std::string_view text) {
    auto converted = com::fromUtf8(text);
    if (!converted) throw UsageError("an argument is not valid UTF-8");
    return *std::move(converted);
}

Variant textValue(std::string_view text) {
    Variant value;
    value.address()->bstrVal = com::makeBstr(utf16(text)).release();
    value.address()->vt = VT_BSTR;
    return value;
}

template <typename Number>
std::optional<Number> number(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    Number result{};
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), result);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return result;
}

// Not the words for infinity and the like, which from_chars takes too.
std::optional<double> floating(std::string_view text) {
    bool const words = text.find_first_not_of("+-.0123456789eE") != text.npos;
    return words ? std::nullopt : number<double>(text);
}

[[noreturn]] void refuse(std::string_view type, std::string_view text) {
    throw UsageError("\"" + std::string(text) + "\" is no value of type " + std::string(type));
}

template <typename Number, VARTYPE type, auto member>
bool readInteger(std::string_view text, VARIANT& value) {
    auto const read = number<std::int64_t>(text);
    if (!read || !std::in_range<Number>(*read)) return false;
    value.*member = static_cast<Number>(*read);
    value.vt = type;
    return true;
}

bool readDouble(std::string_view text, VARIANT& value) {
    auto const read = floating(text);
    if (!read) return false;
    value.dblVal = *read;
    value.vt = VT_R8;
    return true;
}

bool readSingle(std::string_view text, VARIANT& value) {
    auto const read = floating(text);
    if (!read) return false;
    value.fltVal = static_cast<float>(*read);
    value.vt = VT_R4;
    return true;
}

bool readBool(std::string_view text, VARIANT& value) {
    if (text != "true" && text != "false") return false;
    value.boolVal = text == "true" ? VARIANT_TRUE : VARIANT_FALSE;
    value.vt = VT_BOOL;
    return true;
}

bool readText(std::string_view text, VARIANT& value) {
    value = textValue(text).release();
    return true;
}

// "0x" and hexadecimal digits, of a failure or success code.
bool readError(std::string_view text, VARIANT& value) {
    if (!text.starts_with("0x") || text.size() > 10) return false;
    std::uint32_t code = 0;
    auto const [end, error] = std::from_chars(text.data() + 2, text.data() + text.size(), code, 16);
    if (error != std::errc() || end != text.data() + text.size()) return false;
    value.scode = static_cast<SCODE>(code);
    value.vt = VT_ERROR;
    return true;
}

// Takes an unsigned number of exactly `digits` digits off the front.
bool takeDigits(std::string_view& text, std::size_t digits, WORD& out) {
    std::string_view const part = text.substr(0, digits);
    if (part.size() != digits || part.find_first_not_of("0123456789") != part.npos) return false;
    out = number<WORD>(part).value_or(0);
    text.remove_prefix(digits);
    return true;
}

bool takeMark(std::string_view& text, std::string_view marks) {
    if (text.empty() || marks.find(text.front()) == marks.npos) return false;
    text.remove_prefix(1);
    return true;
}

// "2024-02-29", or "2024-02-29 13:45", or "2024-02-29T13:45:10".
bool readDate(std::string_view text, VARIANT& value) {
    SYSTEMTIME time{};
    if (!takeDigits(text, 4, time.wYear) || !takeMark(text, "-") ||
        !takeDigits(text, 2, time.wMonth) || !takeMark(text, "-") ||
        !takeDigits(text, 2, time.wDay)) {
        return false;
    }
    if (takeMark(text, " T")) {
        if (!takeDigits(text, 2, time.wHour) || !takeMark(text, ":") ||
            !takeDigits(text, 2, time.wMinute)) {
            return false;
        }
        if (takeMark(text, ":") && !takeDigits(text, 2, time.wSecond)) return false;
    }
    if (!text.empty() || time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59) return false;
    // The conversion may carry a day that a month does not have into the next.
    SYSTEMTIME back{};
    if (!SystemTimeToVariantTime(&time, &value.date) ||
        !VariantTimeToSystemTime(value.date, &back) || back.wDay != time.wDay) {
        return false;
    }
    value.vt = VT_DATE;
    return true;
}

// Exact decimal types are read by the system, from text with a point.
template <VARTYPE type>
bool readByConversion(std::string_view text, VARIANT& value) {
    if (!floating(text)) return false;
    Variant const source = textValue(text);
    constexpr LCID unitedStates = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), 0);
    return SUCCEEDED(VariantChangeTypeEx(&value, const_cast<VARIANT*>(source.address()),
                                         unitedStates, VARIANT_NOUSEROVERRIDE, type));
}

struct TypeReader {
    std::string_view name;
    bool (*read)(std::string_view text, VARIANT& value);
};
constexpr TypeReader types[] = {{"int", readInteger<std::int32_t, VT_I4, &VARIANT::lVal>},
                                {"int64", readInteger<std::int64_t, VT_I8, &VARIANT::llVal>},
                                {"short", readInteger<std::int16_t, VT_I2, &VARIANT::iVal>},
                                {"byte", readInteger<std::uint8_t, VT_UI1, &VARIANT::bVal>},
                                {"double", readDouble},
                                {"single", readSingle},
                                {"currency", readByConversion<VT_CY>},
                                {"decimal", readByConversion<VT_DECIMAL>},
                                {"bool", readBool},
                                {"date", readDate},
                                {"error", readError},
                                {"string", readText}};

struct Word {
    std::string_view word;
    VARTYPE type;
    SCODE code;  // of VT_ERROR
};
constexpr Word words[] = {{"empty", VT_EMPTY, 0},
                          {"null", VT_NULL, 0},
                          {"nothing", VT_DISPATCH, 0},
                          {"missing", VT_ERROR, DISP_E_PARAMNOTFOUND}};

Variant guess(std::string_view text) {
    Variant value;
    VARIANT& target = *value.address();
    if (types[0].read(text, target) || types[1].read(text, target)) return value;
    if (readDouble(text, target) || readBool(text, target)) return value;
    readText(text, target);
    return value;
}

}  // namespace

Variant readValue(WrittenArgument const& argument) {
    std::string_view const text = argument.text;
    if (argument.quoted) return textValue(text);
    Variant value;
    for (auto const& word : words) {
        if (text != word.word) continue;
        value.address()->vt = word.type;
        if (word.type == VT_ERROR) value.address()->scode = word.code;
        return value;
    }
    std::size_t const colon = text.find(':');
    for (auto const& type : types) {
        if (colon == text.npos || text.substr(0, colon) != type.name) continue;
        std::string_view const rest = text.substr(colon + 1);
        if (!type.read(rest, *value.address())) refuse(type.name, rest);
        return value;
    }
    return guess(text);
}

}  // namespace velk::velkcom
