#include "support/value_notation.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace velk::test {
namespace {

/// How the content of a type is written.
enum class Form { nothing, whole, natural, single, real, currency, decimal, text, code, object };

struct NamedType {
    VARTYPE type;
    std::string_view name;
    Form form;
    unsigned bytes;
};

constexpr NamedType namedTypes[] = {{VT_EMPTY, "EMPTY", Form::nothing, 0},
                                    {VT_NULL, "NULL", Form::nothing, 0},
                                    {VT_I1, "I1", Form::whole, 1},
                                    {VT_UI1, "UI1", Form::natural, 1},
                                    {VT_I2, "I2", Form::whole, 2},
                                    {VT_UI2, "UI2", Form::natural, 2},
                                    {VT_I4, "I4", Form::whole, 4},
                                    {VT_UI4, "UI4", Form::natural, 4},
                                    {VT_I8, "I8", Form::whole, 8},
                                    {VT_UI8, "UI8", Form::natural, 8},
                                    {VT_INT, "INT", Form::whole, 4},
                                    {VT_UINT, "UINT", Form::natural, 4},
                                    {VT_BOOL, "BOOL", Form::whole, 2},
                                    {VT_R4, "R4", Form::single, 4},
                                    {VT_R8, "R8", Form::real, 8},
                                    {VT_DATE, "DATE", Form::real, 8},
                                    {VT_CY, "CY", Form::currency, 8},
                                    {VT_DECIMAL, "DECIMAL", Form::decimal, 16},
                                    {VT_BSTR, "BSTR", Form::text, 8},
                                    {VT_ERROR, "ERROR", Form::code, 4},
                                    {VT_DISPATCH, "DISPATCH", Form::object, 8},
                                    {VT_UNKNOWN, "UNKNOWN", Form::object, 8},
                                    {VT_VARIANT, "VARIANT", Form::object, 8}};

[[noreturn]] void unknownNotation(std::string_view text) {
    std::fprintf(stderr, "no notation of a value: %.*s\n", static_cast<int>(text.size()),
                 text.data());
    std::abort();
}

NamedType const& typeNamed(std::string_view name) {
    auto const* const found = std::ranges::find(namedTypes, name, &NamedType::name);
    if (found == std::end(namedTypes)) unknownNotation(name);
    return *found;
}

template <class Number, class... Base>
Number numberOf(std::string_view text, Base... base) {
    Number number{};
    auto const end = text.data() + text.size();
    if (std::from_chars(text.data(), end, number, base...).ptr != end) unknownNotation(text);
    return number;
}

template <class Number, class... Base>
std::string textOf(Number number, Base... base) {
    char text[64];
    return std::string(text, std::to_chars(text, std::end(text), number, base...).ptr);
}

template <class Real>
std::string textOfReal(Real number) {
    return std::isnan(number) ? "nan" : textOf(number);
}

__extension__ typedef unsigned __int128 Count;

/// A number of decimal digits.
struct Digits {
    bool negative = false;
    Count count = 0;
    unsigned places = 0;
};

std::string textOf(Digits number) {
    std::string text;
    for (; number.count != 0 || text.size() <= number.places; number.count /= 10) {
        text += static_cast<char>('0' + static_cast<int>(number.count % 10));
    }
    if (number.places != 0) text.insert(number.places, 1, '.');
    if (number.negative) text += '-';
    std::ranges::reverse(text);
    return text;
}

Digits digitsOf(std::string_view text) {
    Digits number;
    bool places = false;
    for (char const sign : text) {
        if (sign == '-') {
            number.negative = true;
        } else if (sign == '.') {
            places = true;
        } else {
            number.count = number.count * 10 + static_cast<unsigned>(sign - '0');
            if (places) ++number.places;
        }
    }
    return number;
}

constexpr unsigned currencyPlaces = 4;

std::string textOfCurrency(LONGLONG count) {
    auto const bits = static_cast<ULONGLONG>(count);
    auto text = textOf(Digits{count < 0, count < 0 ? 0 - bits : bits, currencyPlaces});
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text;
}

LONGLONG currencyOf(std::string_view text) {
    auto number = digitsOf(text);
    for (; number.places < currencyPlaces; ++number.places) number.count *= 10;
    auto const bits = static_cast<ULONGLONG>(number.count);
    return static_cast<LONGLONG>(number.negative ? 0 - bits : bits);
}

std::string contentOf(VARIANT const& value, NamedType const& type) {
    unsigned const beyond = 64 - 8 * std::min(type.bytes, 8U);
    switch (type.form) {
        case Form::whole:
            return textOf(value.llVal << beyond >> beyond);
        case Form::natural:
            return textOf(value.ullVal << beyond >> beyond);
        case Form::single:
            return textOfReal(value.fltVal);
        case Form::real:
            return textOfReal(value.dblVal);
        case Form::currency:
            return textOfCurrency(value.cyVal.int64);
        case Form::decimal: {
            auto const& exact = value.decVal;
            return textOf(
                Digits{exact.sign != 0, Count{exact.Hi32} << 64 | exact.Lo64, exact.scale});
        }
        case Form::text:
            return narrow(value.bstrVal, SysStringLen(value.bstrVal));
        case Form::code:
            return textOf(static_cast<ULONG>(value.scode), 16);
        default:
            return value.punkVal == nullptr ? "null" : "object";
    }
}

void setContent(VARIANT& value, NamedType const& type, std::string_view text) {
    switch (type.form) {
        case Form::whole:
            value.llVal = numberOf<LONGLONG>(text);
            break;
        case Form::natural:
            value.ullVal = numberOf<ULONGLONG>(text);
            break;
        case Form::single:
            value.fltVal = numberOf<float>(text);
            break;
        case Form::real:
            value.dblVal = numberOf<double>(text);
            break;
        case Form::currency:
            value.cyVal.int64 = currencyOf(text);
            break;
        case Form::decimal: {
            auto const number = digitsOf(text);
            value.decVal.sign = number.negative ? DECIMAL_NEG : 0;
            value.decVal.scale = static_cast<BYTE>(number.places);
            value.decVal.Hi32 = static_cast<ULONG>(number.count >> 64);
            value.decVal.Lo64 = static_cast<ULONGLONG>(number.count);
            break;
        }
        case Form::text: {
            auto const signs = wide(text);
            value.bstrVal = SysAllocStringLen(signs.data(), static_cast<UINT>(signs.size()));
            break;
        }
        case Form::code:
            value.scode = static_cast<SCODE>(numberOf<ULONG>(text, 16));
            break;
        default:
            if (text != "null") unknownNotation(text);
    }
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
    return name.notation().substr(5) + '{' + fields + '}';
}

}  // namespace

VARTYPE typeCalled(std::string_view name) {
    return typeNamed(name).type;
}

Value::Value(std::string_view notation) {
    VariantInit(&content);
    std::size_t const colon = std::min(notation.find(':'), notation.size());
    auto const& type = typeNamed(notation.substr(0, colon));
    if (colon != notation.size()) setContent(content, type, notation.substr(colon + 1));
    // Last, because a decimal's first word lies where the type does.
    content.vt = type.type;
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
    auto const* const found = std::ranges::find(namedTypes, type, &NamedType::type);
    if (found == std::end(namedTypes)) return "type " + std::to_string(type);
    std::string const name(found->name);
    bool const nothing = found->form == Form::nothing || (type == VT_BSTR && !value.bstrVal);
    return nothing ? name : name + ':' + contentOf(value, *found);
}

// Surrogates that stand alone are three bytes, as in the tables.
std::basic_string<OLECHAR> wide(std::string_view utf8) {
    std::basic_string<OLECHAR> text;
    while (!utf8.empty()) {
        auto const first = static_cast<unsigned char>(utf8[0]);
        std::size_t const length = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        unsigned sign = length == 1 ? first : first & (0x7F >> length);
        for (std::size_t i = 1; i < length && i < utf8.size(); ++i)
            sign = sign << 6 | (static_cast<unsigned char>(utf8[i]) & 0x3F);
        if (sign >= 0x10000) {
            text += static_cast<OLECHAR>(0xD7C0 + (sign >> 10));
            sign = 0xDC00 | (sign & 0x3FF);
        }
        text += static_cast<OLECHAR>(sign);
        utf8.remove_prefix(std::min(length, utf8.size()));
    }
    return text;
}

std::string narrow(OLECHAR const* text, std::size_t length) {
    std::string utf8;
    for (std::size_t i = 0; i < length; ++i) {
        unsigned sign = text[i];
        bool const pair = i + 1 < length && sign >> 10 == 0x36 && text[i + 1] >> 10 == 0x37;
        if (pair) sign = 0x10000 + ((sign & 0x3FF) << 10) + (text[++i] & 0x3FF);
        int const more = sign < 0x80 ? 0 : sign < 0x800 ? 1 : sign < 0x10000 ? 2 : 3;
        constexpr unsigned char heads[] = {0, 0xC0, 0xE0, 0xF0};
        utf8 += static_cast<char>(heads[more] | sign >> (6 * more));
        for (int left = more; left > 0; --left)
            utf8 += static_cast<char>(0x80 | (sign >> (6 * (left - 1)) & 0x3F));
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
        default:
            return textOf(static_cast<ULONG>(result), 16);
    }
}

}  // namespace velk::test
