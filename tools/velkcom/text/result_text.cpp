#include "text/result_text.h"

#include <algorithm>
#include <cstdio>

#include "com/owners.h"
#include "com/utf.h"
#include "text/names.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

using com::ComPtr;
using com::Variant;

// Enough to see what an array holds, without filling the screen.
constexpr ULONG longestArray = 100;
// Of all arrays of a value together: they may lie in one another, or in themselves.
constexpr ULONG mostElements = 10000;
// As deep as people read values in values, far less than a stack can hold.
constexpr int deepestValue = 32;

std::string dateText(DATE date) {
    SYSTEMTIME time{};
    if (!VariantTimeToSystemTime(date, &time)) return numberText(date);
    char text[48];
    std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", unsigned{time.wYear},
                  unsigned{time.wMonth}, unsigned{time.wDay}, unsigned{time.wHour},
                  unsigned{time.wMinute}, unsigned{time.wSecond});
    return text;
}

// Exact decimals are written by the system, with a point.
std::string convertedText(VARIANT const& value) {
    constexpr LCID unitedStates = MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), 0);
    Variant text;
    HRESULT const code = VariantChangeTypeEx(text.address(), const_cast<VARIANT*>(&value),
                                             unitedStates, VARIANT_NOUSEROVERRIDE, VT_BSTR);
    return FAILED(code) ? describeCode(code) : com::toUtf8(com::viewBstr(text.get().bstrVal));
}

std::string typeName(IDispatch* object) {
    ComPtr<ITypeInfo> type;
    com::Bstr name;
    if (FAILED(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, type.put())) || !type ||
        FAILED(type->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr))) {
        return {};
    }
    return nameText(com::viewBstr(name));
}

std::string objectText(IDispatch* object) {
    if (object == nullptr) return "nothing";
    std::string const name = typeName(object);
    return name.empty() ? "object" : "object:" + name;
}

std::string boundsText(SAFEARRAY* array) {
    std::string text;
    for (UINT dimension = 1; dimension <= SafeArrayGetDim(array); ++dimension) {
        LONG lower = 0;
        LONG upper = 0;
        SafeArrayGetLBound(array, dimension, &lower);
        SafeArrayGetUBound(array, dimension, &upper);
        if (!text.empty()) text += ", ";
        text += std::to_string(lower) + ".." + std::to_string(upper);
    }
    return text;
}

bool isPointer(VARTYPE type) {
    return type == VT_BSTR || type == VT_DISPATCH || type == VT_UNKNOWN || type == VT_VARIANT;
}

ULONG sizeOf(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
            return 1;
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return 2;
        case VT_I4:
        case VT_UI4:
        case VT_INT:
        case VT_UINT:
        case VT_R4:
        case VT_ERROR:
            return 4;
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
            return 8;
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return sizeof(void*);
        case VT_DECIMAL:
            return sizeof(DECIMAL);
        case VT_VARIANT:
            return sizeof(VARIANT);
        default:
            return 0;
    }
}

// The number of elements; for more than are shown of an array, one more than these.
ULONG countUpToMore(SAFEARRAY const& array) {
    ULONGLONG count = 1;
    bool more = false;
    for (USHORT i = 0; i < array.cDims; ++i) {
        count *= array.rgsabound[i].cElements;
        if (count == 0) return 0;
        more = more || count > longestArray;
        if (more) count = 1;
    }
    return more ? longestArray + 1 : static_cast<ULONG>(count);
}

// Whether the elements are what the value says: a value of another type would
// be read out of the array's bounds, or through what is no pointer.
bool hasElementsOf(SAFEARRAY* array, VARTYPE type) {
    if (SafeArrayGetElemsize(array) != sizeOf(type) || sizeOf(type) == 0) return false;
    VARTYPE own = VT_EMPTY;
    if (FAILED(SafeArrayGetVartype(array, &own)) || own == type) return true;
    return !isPointer(own) && !isPointer(type);
}

std::string plainText(VARIANT const& value) {
    char const* const written = namesOf(value.vt).written;
    std::string const type = std::string(written != nullptr ? written : "") + ":";
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return namesOf(value.vt).declared;
        case VT_CY:
        case VT_DECIMAL:
            return type + convertedText(value);
        case VT_DATE:
            return type + dateText(value.date);
        case VT_BOOL:
            return type + (value.boolVal != VARIANT_FALSE ? "true" : "false");
        case VT_BSTR:
            return type + com::toUtf8(com::viewBstr(value.bstrVal));
        case VT_ERROR:
            return type + describeCode(value.scode);
        case VT_DISPATCH:
            return objectText(value.pdispVal);
        case VT_UNKNOWN:
            return value.punkVal != nullptr ? "interface" : "nothing";
        case VT_RECORD:
            return "record";
        default:
            break;
    }
    auto const number = storedNumber(value);
    return number ? type + *number : "value of type " + numberText(value.vt);
}

// Reads one value with all that is in it.
class ValueReader {
  public:
    std::string text(VARIANT const& value, int depth = 0) {
        constexpr VARTYPE known = VT_TYPEMASK | VT_ARRAY | VT_BYREF;
        if (depth > deepestValue) return "...";
        if ((value.vt & ~known) != 0) return plainText(value);
        bool const reference = (value.vt & VT_BYREF) != 0;
        if (reference && value.byref == nullptr) return "reference:nothing";
        auto const type = static_cast<VARTYPE>(value.vt & VT_TYPEMASK);
        if ((value.vt & VT_ARRAY) != 0) {
            return arrayText(reference ? *value.pparray : value.parray, type, depth);
        }
        if (!reference) return plainText(value);
        if (type == VT_VARIANT) return text(*value.pvarVal, depth + 1);
        if (type == VT_RECORD) return "record";
        Variant target;
        HRESULT const code = VariantCopyInd(target.address(), const_cast<VARIANT*>(&value));
        return FAILED(code) ? "reference:" + describeCode(code) : plainText(target.get());
    }

  private:
    // Elements in the order of memory: the first index runs fastest.
    std::string arrayText(SAFEARRAY* array, VARTYPE type, int depth) {
        if (array == nullptr) return "array:none";
        std::string text = "array(" + boundsText(array) + "):[";
        void* data = nullptr;
        if (!hasElementsOf(array, type) || FAILED(SafeArrayAccessData(array, &data))) {
            return text + "...]";
        }
        ULONG const count = data != nullptr ? countUpToMore(*array) : 0;
        ULONG const shown = std::min(count, longestArray);
        for (ULONG i = 0; i < shown; ++i) {
            if (i != 0) text += ", ";
            text += elementText(type, static_cast<char*>(data) + std::size_t{i} * array->cbElements,
                                depth);
        }
        SafeArrayUnaccessData(array);
        return text + (count > longestArray ? ", ...]" : "]");
    }

    // An element as a value of its own; the array keeps what it points to.
    std::string elementText(VARTYPE type, void* element, int depth) {
        if (elementsLeft_ == 0) return "...";
        --elementsLeft_;
        VARIANT reference{};
        reference.vt = static_cast<VARTYPE>(type | VT_BYREF);
        reference.byref = element;
        return text(reference, depth + 1);
    }

    ULONG elementsLeft_ = mostElements;
};

}  // namespace

std::string resultText(VARIANT const& value) {
    return ValueReader().text(value);
}

}  // namespace velk::velkcom
