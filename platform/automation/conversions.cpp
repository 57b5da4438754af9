// The steps of VariantChangeTypeEx for plain values: into integers,
// floating-point numbers and dates, exact numbers, truth values and texts.
#include <cmath>
#include <string>

#include "calendar.h"
#include "conversion.h"
#include "date_text.h"
#include "number_source.h"
#include "text_characters.h"

namespace velk::platform {
namespace {

struct IntegerType {
    VARTYPE type;
    unsigned bytes;
    bool isSigned;
};

constexpr IntegerType integerTypes[] = {
    {VT_I1, 1, true}, {VT_UI1, 1, false}, {VT_I2, 2, true},  {VT_UI2, 2, false},
    {VT_I4, 4, true}, {VT_UI4, 4, false}, {VT_INT, 4, true}, {VT_UINT, 4, false},
    {VT_I8, 8, true}, {VT_UI8, 8, false},
};

IntegerType const* integerTypeOf(VARTYPE type) noexcept {
    for (auto const& entry : integerTypes) {
        if (entry.type == type) return &entry;
    }
    return nullptr;
}

// The lowest bytes of the value part are the integer of any width.
HRESULT fit(ExactNumber const& whole, IntegerType const& target, VARIANT& result) noexcept {
    Wide const limit = static_cast<Wide>(1) << (target.bytes * 8 - (target.isSigned ? 1 : 0));
    bool const negative = whole.negative && whole.coefficient != 0;
    if (negative && (!target.isSigned || whole.coefficient > limit)) return DISP_E_OVERFLOW;
    if (!negative && whole.coefficient >= limit) return DISP_E_OVERFLOW;
    auto const magnitude = static_cast<ULONGLONG>(whole.coefficient);
    result.ullVal = negative ? 0 - magnitude : magnitude;
    return S_OK;
}

// "&HFFFF" is -1 for a type of 16 bits: the digits are bits.
HRESULT fitBits(ParsedNumber const& number, IntegerType const& target, VARIANT& result) noexcept {
    if (number.bitsOverflow) return DISP_E_OVERFLOW;
    if (target.bytes < 8 && (number.bits >> (target.bytes * 8)) != 0) return DISP_E_OVERFLOW;
    result.ullVal = number.bits;
    return S_OK;
}

// Half a unit in the last place above the greatest float: what is smaller
// still rounds to it.
constexpr double firstBeyondSingle = 0x1.ffffffp127;

HRESULT readReal(VARIANT const& source, double& value) noexcept {
    Number number;
    HRESULT const status = readNumber(source, number);
    return FAILED(status) ? status : realOf(number, value);
}

constexpr unsigned currencyScale = 4;
constexpr Wide powersOfTen[currencyScale + 1] = {1, 10, 100, 1000, 10000};
constexpr Wide currencyLimit = static_cast<Wide>(1) << 63;

bool equalsIgnoringCase(OLECHAR const* text, std::u16string_view expected) noexcept {
    for (OLECHAR const character : expected) {
        if (lowerLatin(*text) != lowerLatin(character)) return false;
        ++text;
    }
    return *text == 0;
}

// The words for true and false in any case, and the notation of program text.
bool readWord(OLECHAR const* text, VARIANT_BOOL& value) noexcept {
    bool const isTrue = equalsIgnoringCase(text, u"True") || std::u16string_view(text) == u"#TRUE#";
    value = isTrue ? VARIANT_TRUE : VARIANT_FALSE;
    return isTrue || equalsIgnoringCase(text, u"False") || std::u16string_view(text) == u"#FALSE#";
}

HRESULT setText(std::u16string_view text, VARIANT& result) noexcept {
    result.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return result.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT truthToText(VARIANT_BOOL value, Conversion const& conversion, VARIANT& result) {
    if ((conversion.flags & (VARIANT_LOCALBOOL | VARIANT_ALPHABOOL)) != 0) {
        return setText(value != 0 ? u"True" : u"False", result);
    }
    std::string const digits = std::to_string(value);
    return setText(std::u16string(digits.begin(), digits.end()), result);
}

HRESULT numberToText(VARIANT const& source, VARIANT& result) {
    Number number;
    HRESULT const status = readNumber(source, number);
    if (FAILED(status)) return status;
    std::string const digits = number.kind == Number::Kind::real
                                   ? textOf(number.real, number.digits)
                                   : textOf(number.exact);
    return setText(std::u16string(digits.begin(), digits.end()), result);
}

}  // namespace

HRESULT toInteger(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    IntegerType const& target = *integerTypeOf(conversion.type);
    // Between types of the same width the bits stay, whatever they mean; a
    // truth value gives all its bits, or as many as there is room for.
    IntegerType const* const from = integerTypeOf(source.vt);
    if (from != nullptr && from->bytes == target.bytes) {
        result.ullVal = source.ullVal;
        return S_OK;
    }
    if (source.vt == VT_BOOL) {
        result.ullVal = static_cast<ULONGLONG>(LONGLONG{source.boolVal});
        return S_OK;
    }
    Number number;
    HRESULT status = readNumber(source, number);
    if (FAILED(status)) return status;
    if (number.kind == Number::Kind::parsed && number.parsed.isBits) {
        return fitBits(number.parsed, target, result);
    }
    ExactNumber whole;
    status = roundedOf(number, 0, whole);
    return FAILED(status) ? status : fit(whole, target, result);
}

HRESULT toFloating(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    double value = 0;
    HRESULT const status = readReal(source, value);
    if (FAILED(status)) return status;
    if (conversion.type == VT_R8) {
        result.dblVal = value;
        return S_OK;
    }
    if (std::fabs(value) >= firstBeyondSingle) return DISP_E_OVERFLOW;
    result.fltVal = static_cast<float>(value);
    return S_OK;
}

HRESULT toDate(VARIANT const& source, Conversion const&, VARIANT& result) {
    if (source.vt == VT_BSTR) {
        return parseDate(source.bstrVal, result.date);
    }
    double value = 0;
    HRESULT const status = readReal(source, value);
    if (FAILED(status)) return status;
    if (!isDate(value)) return DISP_E_OVERFLOW;
    result.date = value;
    return S_OK;
}

HRESULT toCurrency(VARIANT const& source, Conversion const&, VARIANT& result) {
    Number number;
    HRESULT status = readNumber(source, number);
    if (FAILED(status)) return status;
    ExactNumber value;
    status = roundedOf(number, currencyScale, value);
    if (FAILED(status)) return status;
    Wide const count = value.coefficient * powersOfTen[currencyScale - value.scale];
    if (count > currencyLimit || (count == currencyLimit && !value.negative)) {
        return DISP_E_OVERFLOW;
    }
    auto const magnitude = static_cast<ULONGLONG>(count);
    result.ullVal = value.negative ? 0 - magnitude : magnitude;
    return S_OK;
}

HRESULT toDecimal(VARIANT const& source, Conversion const&, VARIANT& result) {
    Number number;
    HRESULT status = readNumber(source, number);
    if (FAILED(status)) return status;
    ExactNumber value = number.exact;
    if (number.kind == Number::Kind::parsed && number.parsed.isBits) {
        if (number.parsed.bitsOverflow) return DISP_E_OVERFLOW;
        value = exactOf(number.parsed.bits);
    } else if (number.kind == Number::Kind::parsed) {
        status = exactOf(number.parsed, greatestScale, value);
        stripZeroes(value);
    } else if (number.kind == Number::Kind::real) {
        status = exactOf(number.real, number.digits, value);
    }
    // The reserved word shares its place with the type, which the caller sets.
    if (SUCCEEDED(status)) result.decVal = decimalOf(value);
    return status;
}

HRESULT toBoolean(VARIANT const& source, Conversion const&, VARIANT& result) {
    if (source.vt == VT_BSTR && source.bstrVal != nullptr &&
        readWord(source.bstrVal, result.boolVal)) {
        return S_OK;
    }
    Number number;
    HRESULT status = readNumber(source, number);
    if (FAILED(status)) return status;
    double value = 0;
    status = realOf(number, value);
    if (SUCCEEDED(status)) result.boolVal = value != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return status;
}

HRESULT toText(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    switch (source.vt) {
        case VT_EMPTY:
            return setText(u"", result);
        case VT_BOOL:
            return truthToText(source.boolVal, conversion, result);
        case VT_DATE: {
            std::u16string text;
            HRESULT const status = formatDate(source.date, text);
            return FAILED(status) ? status : setText(text, result);
        }
        default:
            return numberToText(source, result);
    }
}

}  // namespace velk::platform
