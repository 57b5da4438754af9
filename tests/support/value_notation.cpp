#include "support/value_notation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

bool hasContent(VARIANT const& value) {
    return value.vt != VT_EMPTY && value.vt != VT_NULL &&
           (value.vt != VT_BSTR || value.bstrVal != nullptr);
}

std::string notationOfArray(SAFEARRAY& array, VARTYPE type) {
    std::string bounds;
    ULONG count = 1;
    for (UINT dimension = 1; dimension <= SafeArrayGetDim(&array); ++dimension) {
        LONG lower = 0;
        LONG upper = 0;
        SafeArrayGetLBound(&array, dimension, &lower);
        SafeArrayGetUBound(&array, dimension, &upper);
        bounds +=
            (dimension == 1 ? "" : ", ") + std::to_string(lower) + ".." + std::to_string(upper);
        count *= static_cast<ULONG>(upper - lower + 1);
    }
    std::string elements;
    for (ULONG index = 0; index < count; ++index) {
        auto* const place = static_cast<BYTE*>(array.pvData) + index * array.cbElements;
        VARIANT element{};
        if (type == VT_VARIANT) {
            std::memcpy(&element, place, sizeof element);
        } else if (type == VT_RECORD) {
            SafeArrayGetRecordInfo(&array, &element.pRecInfo);
            element.pvRecord = place;
        } else {
            std::memcpy(type == VT_DECIMAL ? &element : static_cast<void*>(&element.llVal), place,
                        array.cbElements);
        }
        if (type != VT_VARIANT) element.vt = type;
        elements += (index == 0 ? "" : ", ") + notationOf(element);
        if (type == VT_RECORD) element.pRecInfo->Release();
    }
    return '[' + bounds + "]{" + elements + '}';
}

std::string notationOfRecord(IRecordInfo& info, void* record) {
    Value name;
    name->vt = VT_BSTR;
    BSTR names[64] = {};
    ULONG count = 64;
    if (FAILED(info.GetName(&name->bstrVal)) || FAILED(info.GetFieldNames(&count, names)))
        return "?";
    std::string fields;
    for (ULONG index = 0; index < count; ++index) {
        Value content;
        HRESULT const result = info.GetField(record, names[index], &content);
        fields += (index == 0 ? "" : ", ") + narrow(names[index], SysStringLen(names[index])) +
                  '=' + (result == S_OK ? content.notation() : resultName(result));
        SysFreeString(names[index]);
    }
    return contentOf(*name) + '{' + fields + '}';
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
    VARTYPE const type = typeCalled(notation.substr(0, colon));
    content.vt = type;
    if (colon != notation.size()) setContent(content, notation.substr(colon + 1));
    // Last, because a decimal's first word lies where the type does.
    content.vt = type;
}

std::string Value::notation() const {
    return notationOf(content);
}

std::string notationOf(VARIANT const& value) {
    auto const type = static_cast<VARTYPE>(value.vt & ~VT_ARRAY);
    if (value.vt != type) return value.parray ? notationOfArray(*value.parray, type) : "[null]";
    if (type == VT_RECORD) {
        return value.pRecInfo && value.pvRecord ? notationOfRecord(*value.pRecInfo, value.pvRecord)
                                                : "RECORD:null";
    }
    for (auto const& entry : typeNames) {
        if (entry.type != type) continue;
        std::string const name(entry.name);
        return hasContent(value) ? name + ':' + contentOf(value) : name;
    }
    return "type " + std::to_string(value.vt);
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
        case DISP_E_BADINDEX:
            return "index";
        case DISP_E_ARRAYISLOCKED:
            return "locked";
        case E_INVALIDARG:
            return "invalid";
        default: {
            char text[16];
            auto const code = static_cast<ULONG>(result);
            return std::string(text, std::to_chars(text, std::end(text), code, 16).ptr);
        }
    }
}

}  // namespace velk::test
