#include <cstring>
#include <new>

#include "conversion.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

// An object whose default value is itself would be asked for ever.
constexpr unsigned mostDefaultValues = 16;

// VT_DISPATCH and VT_UNKNOWN out of each other.
HRESULT toObject(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    if (source.vt != VT_UNKNOWN && source.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
    result.punkVal = nullptr;
    if (source.punkVal == nullptr) return S_OK;
    void* found = nullptr;
    HRESULT const status = source.punkVal->QueryInterface(
        conversion.type == VT_UNKNOWN ? IID_IUnknown : IID_IDispatch, &found);
    if (FAILED(status)) return status;
    result.punkVal = static_cast<IUnknown*>(found);
    return S_OK;
}

// The default value of a VT_DISPATCH object. The caller clears `value`.
HRESULT readDefaultValue(VARIANT const& source, Conversion const& conversion, VARIANT& value) {
    if ((conversion.flags & VARIANT_NOVALUEPROP) != 0) return DISP_E_TYPEMISMATCH;
    if (source.pdispVal == nullptr) return DISP_E_BADVARTYPE;
    if (conversion.depth >= mostDefaultValues) return DISP_E_TYPEMISMATCH;
    DISPPARAMS none{};
    HRESULT const status =
        source.pdispVal->Invoke(DISPID_VALUE, IID_NULL, conversion.id, DISPATCH_PROPERTYGET, &none,
                                &value, nullptr, nullptr);
    return FAILED(status) ? DISP_E_TYPEMISMATCH : S_OK;
}

// The bytes of a one-dimensional array of them as a text of that byte length.
HRESULT bytesToText(SAFEARRAY* array, BSTR& text) noexcept {
    text = nullptr;
    if (array == nullptr || array->cDims != 1 || array->cbElements != 1) {
        return DISP_E_TYPEMISMATCH;
    }
    void* data = nullptr;
    HRESULT const status = SafeArrayAccessData(array, &data);
    if (FAILED(status)) return status;
    text = SysAllocStringByteLen(static_cast<LPCSTR>(data), array->rgsabound[0].cElements);
    SafeArrayUnaccessData(array);
    return text == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT textToBytes(BSTR text, SAFEARRAY*& array) noexcept {
    UINT const length = SysStringByteLen(text);
    array = SafeArrayCreateVector(VT_UI1, 0, length);
    if (array == nullptr) return E_OUTOFMEMORY;
    if (length != 0) std::memcpy(array->pvData, text, length);
    return S_OK;
}

struct ConverterEntry {
    VARTYPE type;
    Converter convert;
};

constexpr ConverterEntry converters[] = {
    {VT_I1, toInteger},  {VT_UI1, toInteger},     {VT_I2, toInteger},      {VT_UI2, toInteger},
    {VT_I4, toInteger},  {VT_UI4, toInteger},     {VT_I8, toInteger},      {VT_UI8, toInteger},
    {VT_INT, toInteger}, {VT_UINT, toInteger},    {VT_R4, toFloating},     {VT_R8, toFloating},
    {VT_DATE, toDate},   {VT_CY, toCurrency},     {VT_DECIMAL, toDecimal}, {VT_BOOL, toBoolean},
    {VT_BSTR, toText},   {VT_DISPATCH, toObject}, {VT_UNKNOWN, toObject},
};

Converter converterOf(VARTYPE type) noexcept {
    for (auto const& entry : converters) {
        if (entry.type == type) return entry.convert;
    }
    return nullptr;
}

bool isObject(VARTYPE type) noexcept {
    return type == VT_DISPATCH || type == VT_UNKNOWN;
}

HRESULT convertArray(VARIANT const& source, VARTYPE type, VARIANT& result) noexcept {
    constexpr VARTYPE bytes = VT_ARRAY | VT_UI1;
    HRESULT status = DISP_E_TYPEMISMATCH;
    if (source.vt == bytes && type == VT_BSTR) {
        status = bytesToText(source.parray, result.bstrVal);
    } else if (source.vt == VT_BSTR && type == bytes) {
        status = textToBytes(source.bstrVal, result.parray);
    }
    if (SUCCEEDED(status)) result.vt = type;
    return status;
}

// VT_EMPTY and VT_NULL hold nothing, and everything turns into them that is
// a value at all.
HRESULT convertToNothing(VARIANT const& source, Conversion const& conversion,
                         VARIANT& result) noexcept {
    bool const noValue = source.vt == VT_DISPATCH && (conversion.flags & VARIANT_NOVALUEPROP) != 0;
    if (noValue) return DISP_E_TYPEMISMATCH;
    result.vt = conversion.type;
    return S_OK;
}

HRESULT convertByDefaultValue(VARIANT const& source, Conversion const& conversion,
                              VARIANT& result) {
    VARIANT value;
    VariantInit(&value);
    HRESULT status = readDefaultValue(source, conversion, value);
    if (SUCCEEDED(status)) {
        Conversion inner = conversion;
        ++inner.depth;
        status = convertValue(value, inner, result);
    }
    VariantClear(&value);
    return status;
}

HRESULT convertBorrowed(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    VARTYPE const type = conversion.type;
    if (!isVariantType(source.vt)) return DISP_E_BADVARTYPE;
    if (source.vt == type) return VariantCopy(&result, &source);
    if (isByReference(type)) return DISP_E_TYPEMISMATCH;
    if (isArray(source.vt) || isArray(type)) return convertArray(source, type, result);
    if (source.vt == VT_NULL || source.vt == VT_ERROR || source.vt == VT_RECORD) {
        return DISP_E_TYPEMISMATCH;
    }
    if (type == VT_EMPTY || type == VT_NULL) return convertToNothing(source, conversion, result);
    Converter const convert = converterOf(type);
    if (convert == nullptr) return DISP_E_TYPEMISMATCH;
    if (source.vt == VT_DISPATCH && !isObject(type)) {
        return convertByDefaultValue(source, conversion, result);
    }
    HRESULT const status = convert(source, conversion, result);
    // Last, because a decimal's first word lies where the type does.
    result.vt = SUCCEEDED(status) ? type : static_cast<VARTYPE>(VT_EMPTY);
    return status;
}

}  // namespace

HRESULT convertValue(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    if (!isVariantType(source.vt) || !isVariantType(conversion.type)) return DISP_E_BADVARTYPE;
    VARIANT value;
    HRESULT const status = borrowReferenced(source, value);
    return FAILED(status) ? status : convertBorrowed(value, conversion, result);
}

}  // namespace velk::platform

using namespace velk::platform;

HRESULT VariantChangeType(VARIANTARG* destination, VARIANTARG const* source, USHORT flags,
                          VARTYPE type) {
    return VariantChangeTypeEx(destination, source, LOCALE_USER_DEFAULT, flags, type);
}

HRESULT VariantChangeTypeEx(VARIANTARG* destination, VARIANTARG const* source, LCID lcid,
                            USHORT flags, VARTYPE type) {
    if (destination == nullptr || source == nullptr) return E_INVALIDARG;
    if (destination == source && source->vt == type && isVariantType(type)) return S_OK;
    VARIANT result;
    VariantInit(&result);
    HRESULT status = E_OUTOFMEMORY;
    try {
        status =
            convertValue(*source, Conversion{.id = lcid, .flags = flags, .type = type}, result);
    } catch (std::bad_alloc const&) {
        status = E_OUTOFMEMORY;
    }
    if (FAILED(status)) return status;
    // Only now: the source may be the destination, or lie inside it.
    status = VariantClear(destination);
    if (FAILED(status)) {
        VariantClear(&result);
        return status;
    }
    *destination = result;
    return S_OK;
}
