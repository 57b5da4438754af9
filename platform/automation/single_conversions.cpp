// The functions for one pair of types, which share everything with
// VariantChangeTypeEx.
#include <new>

#include "conversion.h"
#include "date_text.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

/// Converts to `type` and hands the whole result over to the caller.
HRESULT change(VARIANT const& source, LCID lcid, ULONG flags, VARTYPE type, VARIANT& result) {
    VariantInit(&result);
    try {
        return convertValue(
            source, Conversion{.id = lcid, .flags = static_cast<USHORT>(flags), .type = type},
            result);
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    }
}

// Unlike SysAllocString this borrows: the parser stops at the zero.
VARIANT borrowedText(LPCOLESTR text) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = const_cast<BSTR>(text);
    return value;
}

template <class Field, class Value>
HRESULT fromText(LPCOLESTR text, LCID lcid, ULONG flags, VARTYPE type, Field field, Value* out) {
    if (out == nullptr) return E_INVALIDARG;
    VARIANT result;
    HRESULT const status = change(borrowedText(text), lcid, flags, type, result);
    if (SUCCEEDED(status)) *out = result.*field;
    return status;
}

template <class Field, class Value>
HRESULT toBstr(VARTYPE type, Field field, Value value, LCID lcid, ULONG flags, BSTR* out) {
    if (out == nullptr) return E_INVALIDARG;
    VARIANT source;
    VariantInit(&source);
    source.*field = value;
    source.vt = type;
    VARIANT result;
    HRESULT const status = change(source, lcid, flags, VT_BSTR, result);
    if (SUCCEEDED(status)) *out = result.bstrVal;
    return status;
}

}  // namespace
}  // namespace velk::platform

using namespace velk::platform;

HRESULT VarI4FromStr(LPCOLESTR text, LCID lcid, ULONG flags, LONG* value) {
    return fromText(text, lcid, flags, VT_I4, &VARIANT::lVal, value);
}

HRESULT VarR8FromStr(LPCOLESTR text, LCID lcid, ULONG flags, DOUBLE* value) {
    return fromText(text, lcid, flags, VT_R8, &VARIANT::dblVal, value);
}

HRESULT VarCyFromStr(LPCOLESTR text, LCID lcid, ULONG flags, CY* value) {
    return fromText(text, lcid, flags, VT_CY, &VARIANT::cyVal, value);
}

HRESULT VarDecFromStr(LPCOLESTR text, LCID lcid, ULONG flags, DECIMAL* value) {
    HRESULT const status = fromText(text, lcid, flags, VT_DECIMAL, &VARIANT::decVal, value);
    if (SUCCEEDED(status)) value->wReserved = 0;
    return status;
}

HRESULT VarBoolFromStr(LPCOLESTR text, LCID lcid, ULONG flags, VARIANT_BOOL* value) {
    return fromText(text, lcid, flags, VT_BOOL, &VARIANT::boolVal, value);
}

HRESULT VarDateFromStr(LPCOLESTR text, LCID lcid, ULONG flags, DATE* value) {
    if (value == nullptr) return E_INVALIDARG;
    return parseDate(text, localeOf(lcid), flags, *value);
}

HRESULT VarBstrFromI4(LONG value, LCID lcid, ULONG flags, BSTR* text) {
    return toBstr(VT_I4, &VARIANT::lVal, value, lcid, flags, text);
}

HRESULT VarBstrFromR8(DOUBLE value, LCID lcid, ULONG flags, BSTR* text) {
    return toBstr(VT_R8, &VARIANT::dblVal, value, lcid, flags, text);
}

HRESULT VarBstrFromCy(CY value, LCID lcid, ULONG flags, BSTR* text) {
    return toBstr(VT_CY, &VARIANT::cyVal, value, lcid, flags, text);
}

HRESULT VarBstrFromDec(DECIMAL* value, LCID lcid, ULONG flags, BSTR* text) {
    if (value == nullptr) return E_INVALIDARG;
    return toBstr(VT_DECIMAL, &VARIANT::decVal, *value, lcid, flags, text);
}

HRESULT VarBstrFromBool(VARIANT_BOOL value, LCID lcid, ULONG flags, BSTR* text) {
    return toBstr(VT_BOOL, &VARIANT::boolVal, value, lcid, flags, text);
}

HRESULT VarBstrFromDate(DATE value, LCID lcid, ULONG flags, BSTR* text) {
    if (text == nullptr) return E_INVALIDARG;
    try {
        std::u16string characters;
        HRESULT const status = formatDate(value, localeOf(lcid), flags, characters);
        if (FAILED(status)) return status;
        *text = SysAllocStringLen(characters.data(), static_cast<UINT>(characters.size()));
        return *text == nullptr ? E_OUTOFMEMORY : S_OK;
    } catch (std::bad_alloc const&) {
        return E_OUTOFMEMORY;
    }
}
