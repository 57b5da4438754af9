#include <cstring>

#include "conversion.h"
#include "nested_values.h"
#include "variant_type.h"

namespace velk::platform {
namespace {

HRESULT copyText(VARIANT& copy, VARIANT const& source) noexcept {
    // The copy of a null text is an empty one.
    BSTR const text = source.bstrVal;
    copy.bstrVal = SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
    return copy.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT copyRecord(VARIANT& copy, VARIANT const& source) noexcept {
    if (source.pRecInfo == nullptr) return source.pvRecord == nullptr ? S_OK : E_INVALIDARG;
    copy.pvRecord = nullptr;
    if (source.pvRecord != nullptr) {
        RecordCopyLevel const level;
        HRESULT result = level.result();
        if (FAILED(result)) return result;
        result = source.pRecInfo->RecordCreateCopy(source.pvRecord, &copy.pvRecord);
        if (FAILED(result)) return result;
    }
    source.pRecInfo->AddRef();
    return S_OK;
}

// `copy` already is `source` bit by bit; this makes it own what it holds.
HRESULT ownCopy(VARIANT& copy, VARIANT const& source) noexcept {
    if (isByReference(source.vt)) return S_OK;
    if (isArray(source.vt)) {
        copy.parray = nullptr;
        return source.parray == nullptr ? S_OK : SafeArrayCopy(source.parray, &copy.parray);
    }
    switch (source.vt) {
        case VT_BSTR:
            return copyText(copy, source);
        case VT_UNKNOWN:
        case VT_DISPATCH:
            if (source.punkVal != nullptr) source.punkVal->AddRef();
            return S_OK;
        case VT_RECORD:
            return copyRecord(copy, source);
        default:
            return S_OK;
    }
}

HRESULT releaseContent(VARIANT& value) noexcept {
    if (isByReference(value.vt)) return S_OK;
    if (isArray(value.vt)) return destroyArrayInTurn(value.parray);
    switch (value.vt) {
        case VT_BSTR:
            SysFreeString(value.bstrVal);
            break;
        case VT_UNKNOWN:
        case VT_DISPATCH:
            if (value.punkVal != nullptr) value.punkVal->Release();
            break;
        case VT_RECORD:
            destroyRecordInTurn(value.pRecInfo, value.pvRecord);
            break;
        default:
            break;
    }
    return S_OK;
}

}  // namespace

HRESULT borrowReferenced(VARIANT const& source, VARIANT& value) noexcept {
    value = source;
    if (source.vt == (VT_BYREF | VT_VARIANT)) {
        if (source.pvarVal == nullptr) return DISP_E_TYPEMISMATCH;
        value = *source.pvarVal;
        if (value.vt == (VT_BYREF | VT_VARIANT)) return E_INVALIDARG;
    }
    if (!isByReference(value.vt)) return S_OK;
    VARIANT const reference = value;
    if (!isVariantType(reference.vt)) return DISP_E_BADVARTYPE;
    // A record is held by address in either form.
    value.vt = reference.vt & ~VT_BYREF;
    if (value.vt == VT_RECORD) return S_OK;
    if (reference.byref == nullptr) return DISP_E_TYPEMISMATCH;
    VariantInit(&value);
    if (isArray(reference.vt)) {
        value.parray = *reference.pparray;
    } else if (baseType(reference.vt) == VT_DECIMAL) {
        value.decVal = *reference.pdecVal;
    } else {
        std::memcpy(&value.llVal, reference.byref, sizeOfType(baseType(reference.vt)));
    }
    value.vt = reference.vt & ~VT_BYREF;
    return S_OK;
}

}  // namespace velk::platform

using namespace velk::platform;

void VariantInit(VARIANTARG* value) {
    if (value != nullptr) std::memset(value, 0, sizeof *value);
}

HRESULT VariantClear(VARIANTARG* value) {
    if (value == nullptr) return E_INVALIDARG;
    if (!isVariantType(value->vt)) return DISP_E_BADVARTYPE;
    HRESULT const result = releaseContent(*value);
    if (SUCCEEDED(result)) VariantInit(value);
    return result;
}

HRESULT VariantCopy(VARIANTARG* destination, VARIANTARG const* source) {
    if (destination == nullptr || source == nullptr) return E_INVALIDARG;
    if (!isVariantType(source->vt)) return DISP_E_BADVARTYPE;
    if (destination == source) return S_OK;
    HRESULT result = VariantClear(destination);
    if (FAILED(result)) return result;
    VARIANT copy = *source;
    result = ownCopy(copy, *source);
    if (SUCCEEDED(result)) *destination = copy;
    return result;
}

HRESULT VariantCopyInd(VARIANT* destination, VARIANTARG const* source) {
    if (destination == nullptr || source == nullptr) return E_INVALIDARG;
    if (!isByReference(source->vt)) return VariantCopy(destination, source);
    if (!isVariantType(source->vt)) return E_INVALIDARG;

    VARIANT borrowed;
    if (FAILED(borrowReferenced(*source, borrowed))) return E_INVALIDARG;
    // Copied before the destination is cleared: the source may be a
    // reference into the destination.
    VARIANT copy;
    VariantInit(&copy);
    HRESULT result = VariantCopy(&copy, &borrowed);
    if (FAILED(result)) return result;
    if (destination != source) result = VariantClear(destination);
    if (FAILED(result)) {
        VariantClear(&copy);
        return result;
    }
    *destination = copy;
    return S_OK;
}
