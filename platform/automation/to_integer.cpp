#include "conversion.h"
#include "number_source.h"

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

// The lowest bytes of the value part are the integer of that width.
void setBits(VARIANT& result, ULONGLONG bits) noexcept {
    result.ullVal = bits;
}

HRESULT fit(ExactNumber const& whole, IntegerType const& target, VARIANT& result) noexcept {
    Wide const limit = static_cast<Wide>(1) << (target.bytes * 8 - (target.isSigned ? 1 : 0));
    bool const negative = whole.negative && whole.coefficient != 0;
    if (negative && (!target.isSigned || whole.coefficient > limit)) return DISP_E_OVERFLOW;
    if (!negative && whole.coefficient >= limit) return DISP_E_OVERFLOW;
    auto const magnitude = static_cast<ULONGLONG>(whole.coefficient);
    setBits(result, negative ? 0 - magnitude : magnitude);
    return S_OK;
}

// "&HFFFF" is -1 for a type of 16 bits: the digits are bits.
HRESULT fitBits(ParsedNumber const& number, IntegerType const& target, VARIANT& result) noexcept {
    if (number.bitsOverflow) return DISP_E_OVERFLOW;
    if (target.bytes < 8 && (number.bits >> (target.bytes * 8)) != 0) return DISP_E_OVERFLOW;
    setBits(result, number.bits);
    return S_OK;
}

}  // namespace

HRESULT toInteger(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    IntegerType const& target = *integerTypeOf(conversion.type);
    // Between types of the same width the bits stay, whatever they mean; a
    // truth value gives all its bits, or as many as there is room for.
    IntegerType const* const from = integerTypeOf(source.vt);
    if (from != nullptr && from->bytes == target.bytes) {
        setBits(result, source.ullVal);
        return S_OK;
    }
    if (source.vt == VT_BOOL) {
        setBits(result, static_cast<ULONGLONG>(LONGLONG{source.boolVal}));
        return S_OK;
    }
    Number number;
    HRESULT status = readNumber(source, conversion, number);
    if (FAILED(status)) return status;
    if (number.kind == Number::Kind::parsed && number.parsed.isBits) {
        return fitBits(number.parsed, target, result);
    }
    ExactNumber whole;
    status = roundedOf(number, 0, whole);
    return FAILED(status) ? status : fit(whole, target, result);
}

}  // namespace velk::platform
