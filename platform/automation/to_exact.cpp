#include "conversion.h"
#include "number_source.h"

namespace velk::platform {
namespace {

constexpr unsigned currencyScale = 4;
constexpr Wide powersOfTen[currencyScale + 1] = {1, 10, 100, 1000, 10000};
constexpr Wide currencyLimit = static_cast<Wide>(1) << 63;

// The reserved word shares its place with the type, which the caller sets.
void setDecimal(VARIANT& result, ExactNumber const& number) noexcept {
    result.decVal = decimalOf(number);
}

}  // namespace

HRESULT toCurrency(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    Number number;
    HRESULT status = readNumber(source, conversion, number);
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

HRESULT toDecimal(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    Number number;
    HRESULT status = readNumber(source, conversion, number);
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
    if (SUCCEEDED(status)) setDecimal(result, value);
    return status;
}

}  // namespace velk::platform
