#include "number_source.h"

#include <cmath>

namespace velk::platform {
namespace {

void setReal(Number& number, double value, int digits = doubleDigits) noexcept {
    number.kind = Number::Kind::real;
    number.real = value;
    number.digits = digits;
}

// The nearest whole number; of two equally near ones the even one. `error` is
// what `value` lacks of the exact number that is to be rounded.
double roundToEven(double value, double error) noexcept {
    double const below = std::floor(value);
    double const fraction = value - below;
    if (fraction < 0.5) return below;
    if (fraction > 0.5) return below + 1;
    if (error != 0) return error < 0 ? below : below + 1;
    return std::fmod(below, 2) == 0 ? below : below + 1;
}

HRESULT roundedOfReal(double value, unsigned scale, ExactNumber& rounded) noexcept {
    double const magnitude = std::fabs(value);
    // 2^64 is more than any integer or currency type holds.
    if (!(magnitude < 0x1p64)) return DISP_E_OVERFLOW;
    // The whole part apart, because it may need all 53 bits for itself.
    double const whole = std::trunc(magnitude);
    double const fraction = magnitude - whole;
    double const factor = std::pow(10.0, scale);
    double const scaled = fraction * factor;
    double const nearest = scale == 0 && fraction == 0.5
                               ? std::fmod(whole, 2)
                               : roundToEven(scaled, std::fma(fraction, factor, -scaled));
    rounded.coefficient =
        static_cast<Wide>(static_cast<ULONGLONG>(whole)) * static_cast<unsigned>(factor) +
        static_cast<unsigned>(nearest);
    rounded.negative = value < 0;
    rounded.scale = scale;
    return S_OK;
}

}  // namespace

HRESULT readNumber(VARIANT const& source, Number& number) noexcept {
    switch (source.vt) {
        case VT_EMPTY:
            return S_OK;
        case VT_I1:
            number.exact = exactOf(LONGLONG{static_cast<signed char>(source.cVal)});
            return S_OK;
        case VT_UI1:
            number.exact = exactOf(ULONGLONG{source.bVal});
            return S_OK;
        case VT_I2:
        case VT_BOOL:
            number.exact = exactOf(LONGLONG{source.iVal});
            return S_OK;
        case VT_UI2:
            number.exact = exactOf(ULONGLONG{source.uiVal});
            return S_OK;
        case VT_I4:
        case VT_INT:
            number.exact = exactOf(LONGLONG{source.lVal});
            return S_OK;
        case VT_UI4:
        case VT_UINT:
            number.exact = exactOf(ULONGLONG{source.ulVal});
            return S_OK;
        case VT_I8:
            number.exact = exactOf(source.llVal);
            return S_OK;
        case VT_UI8:
            number.exact = exactOf(source.ullVal);
            return S_OK;
        case VT_R4:
            setReal(number, source.fltVal, singleDigits);
            return S_OK;
        case VT_R8:
        case VT_DATE:
            setReal(number, source.dblVal);
            return S_OK;
        case VT_CY:
            number.exact = exactOf(source.cyVal);
            return S_OK;
        case VT_DECIMAL:
            return exactOf(source.decVal, number.exact);
        case VT_BSTR:
            number.kind = Number::Kind::parsed;
            return parseNumber(source.bstrVal, number.parsed);
        default:
            return DISP_E_TYPEMISMATCH;
    }
}

HRESULT realOf(Number const& number, double& value) noexcept {
    switch (number.kind) {
        case Number::Kind::real:
            value = number.real;
            return S_OK;
        case Number::Kind::parsed:
            return realOf(number.parsed, value);
        default:
            value = realOf(number.exact);
            return S_OK;
    }
}

HRESULT roundedOf(Number const& number, unsigned scale, ExactNumber& value) noexcept {
    switch (number.kind) {
        case Number::Kind::real:
            return roundedOfReal(number.real, scale, value);
        case Number::Kind::parsed:
            return exactOf(number.parsed, scale, value);
        default:
            value = number.exact;
            roundToScale(value, scale);
            return S_OK;
    }
}

}  // namespace velk::platform
