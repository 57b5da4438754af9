#include "value_notation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace velk::test {
namespace {

struct TypeName {
    VARTYPE type;
    std::string_view name;
};

constexpr TypeName typeNames[] = {{VT_EMPTY, "EMPTY"},
                                  {VT_NULL, "NULL"},
                                  {VT_I2, "I2"},
                                  {VT_I4, "I4"},
                                  {VT_R4, "R4"},
                                  {VT_R8, "R8"},
                                  {VT_CY, "CY"},
                                  {VT_DATE, "DATE"},
                                  {VT_BSTR, "BSTR"},
                                  {VT_ERROR, "ERROR"},
                                  {VT_DISPATCH, "DISPATCH"},
                                  {VT_BOOL, "BOOL"},
                                  {VT_VARIANT, "VARIANT"},
                                  {VT_I1, "I1"},
                                  {VT_UNKNOWN, "UNKNOWN"},
                                  {VT_UI1, "UI1"},
                                  {VT_DECIMAL, "DECIMAL"},
                                  {VT_UI2, "UI2"},
                                  {VT_UI4, "UI4"},
                                  {VT_I8, "I8"},
                                  {VT_UI8, "UI8"},
                                  {VT_INT, "INT"},
                                  {VT_UINT, "UINT"}};

[[noreturn]] void unknownNotation(std::string_view text) {
    std::fprintf(stderr, "no notation of a value: %.*s\n", static_cast<int>(text.size()),
                 text.data());
    std::abort();
}

template <class Number>
Number numberOf(std::string_view text, int base = 10) {
    Number number{};
    auto const end = text.data() + text.size();
    if (std::from_chars(text.data(), end, number, base).ptr != end) unknownNotation(text);
    return number;
}

template <class Real>
Real realOf(std::string_view text) {
    Real number{};
    auto const end = text.data() + text.size();
    if (std::from_chars(text.data(), end, number).ptr != end) unknownNotation(text);
    return number;
}

template <class Real>
std::string textOfReal(Real number) {
    if (std::isnan(number)) return "nan";
    char text[64];
    return std::string(text, std::to_chars(text, std::end(text), number).ptr);
}

// A count of 96 bits in three words, the lowest first, in base 10.
std::string textOfWords(ULONG words[3]) {
    std::string digits;
    do {
        ULONGLONG rest = 0;
        for (int index = 2; index >= 0; --index) {
            ULONGLONG const part = (rest << 32) | words[index];
            words[index] = static_cast<ULONG>(part / 10);
            rest = part % 10;
        }
        digits.push_back(static_cast<char>('0' + rest));
    } while ((words[0] | words[1] | words[2]) != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

std::string withPlaces(std::string digits, unsigned places, bool negative) {
    if (places != 0) {
        if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
        digits.insert(digits.size() - places, 1, '.');
    }
    return negative ? '-' + digits : digits;
}

std::string textOfDecimal(DECIMAL const& value) {
    ULONG words[3] = {value.Lo32, value.Mid32, value.Hi32};
    return withPlaces(textOfWords(words), value.scale, value.sign != 0);
}

void readDecimal(std::string_view text, DECIMAL& value) {
    bool places = false;
    ULONG words[3] = {};
    for (char const character : text) {
        if (character == '-') {
            value.sign = DECIMAL_NEG;
        } else if (character == '.') {
            places = true;
        } else {
            ULONGLONG carry = static_cast<ULONGLONG>(character - '0');
            for (ULONG& word : words) {
                carry += static_cast<ULONGLONG>(word) * 10;
                word = static_cast<ULONG>(carry);
                carry >>= 32;
            }
            if (places) ++value.scale;
        }
    }
    value.Lo32 = words[0];
    value.Mid32 = words[1];
    value.Hi32 = words[2];
}

std::string textOfCurrency(CY value) {
    bool const negative = value.int64 < 0;
    auto const bits = static_cast<ULONGLONG>(value.int64);
    std::string text = withPlaces(std::to_string(negative ? 0 - bits : bits), 4, negative);
    while (text.back() == '0') text.pop_back();
    if (text.back() == '.') text.pop_back();
    return text;
}

LONGLONG countOfCurrency(std::string_view text) {
    std::size_t const point = std::min(text.find('.'), text.size());
    std::string digits(text.substr(0, point));
    std::string places(point < text.size() ? text.substr(point + 1) : "");
    places.resize(4, '0');
    return numberOf<LONGLONG>(digits + places);
}

std::string contentOf(VARIANT const& value) {
    switch (value.vt) {
        case VT_I1:
            return std::to_string(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return std::to_string(value.bVal);
        case VT_I2:
        case VT_BOOL:
            return std::to_string(value.iVal);
        case VT_UI2:
            return std::to_string(value.uiVal);
        case VT_I4:
        case VT_INT:
            return std::to_string(value.lVal);
        case VT_UI4:
        case VT_UINT:
            return std::to_string(value.ulVal);
        case VT_I8:
            return std::to_string(value.llVal);
        case VT_UI8:
            return std::to_string(value.ullVal);
        case VT_R4:
            return textOfReal(value.fltVal);
        case VT_R8:
        case VT_DATE:
            return textOfReal(value.dblVal);
        case VT_CY:
            return textOfCurrency(value.cyVal);
        case VT_DECIMAL:
            return textOfDecimal(value.decVal);
        case VT_BSTR:
            return narrow(value.bstrVal, SysStringLen(value.bstrVal));
        case VT_ERROR: {
            char text[16];
            auto const code = static_cast<ULONG>(value.scode);
            return std::string(text, std::to_chars(text, std::end(text), code, 16).ptr);
        }
        default:
            return value.punkVal == nullptr ? "null" : "object";
    }
}

void setContent(VARIANT& value, std::string_view text) {
    switch (value.vt) {
        case VT_I1:
        case VT_I2:
        case VT_I4:
        case VT_INT:
        case VT_I8:
        case VT_BOOL:
            value.llVal = numberOf<LONGLONG>(text);
            break;
        case VT_UI1:
        case VT_UI2:
        case VT_UI4:
        case VT_UINT:
        case VT_UI8:
            value.ullVal = numberOf<ULONGLONG>(text);
            break;
        case VT_R4:
            value.fltVal = realOf<float>(text);
            break;
        case VT_R8:
        case VT_DATE:
            value.dblVal = realOf<double>(text);
            break;
        case VT_CY:
            value.cyVal.int64 = countOfCurrency(text);
            break;
        case VT_DECIMAL:
            readDecimal(text, value.decVal);
            break;
        case VT_BSTR: {
            auto const characters = wide(text);
            value.bstrVal =
                SysAllocStringLen(characters.data(), static_cast<UINT>(characters.size()));
            break;
        }
        case VT_ERROR:
            value.scode = static_cast<SCODE>(numberOf<ULONG>(text, 16));
            break;
        default:
            if (text != "null") unknownNotation(text);
            value.punkVal = nullptr;
    }
}

bool hasContent(VARTYPE type) {
    return type != VT_EMPTY && type != VT_NULL;
}

}  // namespace

VARTYPE typeCalled(std::string_view name) {
    for (auto const& entry : typeNames) {
        if (entry.name == name) return entry.type;
    }
    unknownNotation(name);
}

Value::Value(std::string_view notation) {
    VariantInit(&content);
    std::size_t const colon = std::min(notation.find(':'), notation.size());
    content.vt = typeCalled(notation.substr(0, colon));
    if (!hasContent(content.vt)) return;
    VARTYPE const type = content.vt;
    setContent(content, notation.substr(std::min(colon + 1, notation.size())));
    content.vt = type;
}

std::string Value::notation() const {
    for (auto const& entry : typeNames) {
        if (entry.type != content.vt) continue;
        std::string const name(entry.name);
        return hasContent(content.vt) ? name + ':' + contentOf(content) : name;
    }
    return "type " + std::to_string(content.vt);
}

std::basic_string<OLECHAR> wide(std::string_view utf8) {
    std::basic_string<OLECHAR> text;
    for (std::size_t index = 0; index < utf8.size();) {
        auto const lead = static_cast<unsigned char>(utf8[index]);
        unsigned const length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : 3;
        unsigned code = length == 1 ? lead : lead & (0x3fU >> (length - 1));
        for (unsigned next = 1; next < length; ++next) {
            code = (code << 6) | (static_cast<unsigned char>(utf8[index + next]) & 0x3fU);
        }
        text.push_back(static_cast<OLECHAR>(code));
        index += length;
    }
    return text;
}

std::string narrow(OLECHAR const* text, std::size_t length) {
    std::string utf8;
    for (std::size_t index = 0; index < length; ++index) {
        auto const code = static_cast<unsigned>(text[index]);
        if (code < 0x80) {
            utf8.push_back(static_cast<char>(code));
        } else if (code < 0x800) {
            utf8.push_back(static_cast<char>(0xc0 | (code >> 6)));
            utf8.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        } else {
            utf8.push_back(static_cast<char>(0xe0 | (code >> 12)));
            utf8.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3f)));
            utf8.push_back(static_cast<char>(0x80 | (code & 0x3f)));
        }
    }
    return utf8;
}

std::string resultName(HRESULT result) {
    switch (result) {
        case S_OK:
            return "OK";
        case DISP_E_OVERFLOW:
            return "overflow";
        case DISP_E_TYPEMISMATCH:
            return "mismatch";
        case DISP_E_BADVARTYPE:
            return "badtype";
        case E_INVALIDARG:
            return "invalid";
        default: {
            char text[16];
            auto const code = static_cast<ULONG>(result);
            return std::string(text, std::to_chars(text, std::end(text), code, 16).ptr);
        }
    }
}

std::string changed(std::string_view source, std::string_view type, LCID lcid, USHORT flags) {
    Value from(source);
    Value to;
    HRESULT const result = VariantChangeTypeEx(&to, &from, lcid, flags, typeCalled(type));
    return result == S_OK ? to.notation() : resultName(result);
}

}  // namespace velk::test
