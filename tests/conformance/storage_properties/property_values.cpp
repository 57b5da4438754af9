#include "conformance/storage_properties/property_values.h"

#include <algorithm>
#include <cstring>

#include "com/utf.h"

namespace velk::test {
namespace {

constexpr std::size_t pointer = sizeof(void*);
constexpr ValueKind kinds[] = {{VT_NULL, 0, "aw"},
                               {VT_I1, 1, "avrw"},
                               {VT_UI1, 1, "avrw"},
                               {VT_I2, 2, "avrw"},
                               {VT_UI2, 2, "avrw"},
                               {VT_I4, 4, "avrw"},
                               {VT_UI4, 4, "avrw"},
                               {VT_INT, 4, "ar"},
                               {VT_UINT, 4, "ar"},
                               {VT_ERROR, 4, "avr"},
                               {VT_I8, 8, "avrw"},
                               {VT_UI8, 8, "avr"},
                               {VT_R4, 4, "avr"},
                               {VT_R8, 8, "avr"},
                               {VT_BOOL, 2, "avr"},
                               {VT_CY, 8, "avr"},
                               {VT_DATE, 8, "avr"},
                               {VT_DECIMAL, 16, "ar"},
                               {VT_FILETIME, 8, "avw"},
                               {VT_LPSTR, pointer, "av"},
                               {VT_LPWSTR, pointer, "avw"},
                               {VT_BSTR, pointer, "avr"},
                               {VT_CLSID, 16, "avw"},
                               {VT_BLOB, 0, "aw"},
                               {VT_CF, sizeof(CLIPDATA), "avw"},
                               {VT_VARIANT, sizeof(PROPVARIANT), "vr"}};

std::size_t sizeOf(VARTYPE type) {
    return std::ranges::find(kinds, type, &ValueKind::type)->size;
}

template <typename Element>
Element* taskCopy(std::basic_string<Element> const& elements) {
    std::size_t const size = (elements.size() + 1) * sizeof(Element);
    return static_cast<Element*>(std::memcpy(CoTaskMemAlloc(size), elements.c_str(), size));
}
BYTE* taskBytes(std::size_t count, unsigned number) {
    return reinterpret_cast<BYTE*>(taskCopy(pattern(count, number)));
}

/// In zeros.
void makeElement(VARTYPE type, unsigned number, void* place) {
    Text wide = OLESTR("Zo\xeb \x17e ");
    std::string narrow = "text ";
    for (char const digit : std::to_string(number)) wide += static_cast<OLECHAR>(digit);
    narrow += std::string(number % 70, 'n');
    ULONG const count = number % 9;
    switch (type) {
        case VT_LPSTR:
            *static_cast<char**>(place) = taskCopy(narrow);
            return;
        case VT_LPWSTR:
            *static_cast<OLECHAR**>(place) = taskCopy(wide);
            return;
        case VT_BSTR:
            *static_cast<BSTR*>(place) = SysAllocString(wide.c_str());
            return;
        case VT_BLOB:
            *static_cast<BLOB*>(place) = {count, taskBytes(count, number)};
            return;
        case VT_CF:
            *static_cast<CLIPDATA*>(place) = {static_cast<ULONG>(sizeof(LONG)) + count, -1,
                                              taskBytes(count, number)};
            return;
        case VT_VARIANT: {
            constexpr VARTYPE simple[] = {VT_I4, VT_BSTR, VT_BOOL, VT_R8, VT_CY};
            makeValue(simple[number % std::size(simple)], number,
                      *static_cast<PROPVARIANT*>(place));
            return;
        }
        default:
            std::memcpy(place, pattern(sizeOf(type), number).data(), sizeOf(type));
    }
}

/// The bounds of an array's dimensions, and all its elements.
SAFEARRAY* makeArray(VARTYPE type, unsigned number) {
    SAFEARRAYBOUND bounds[] = {{number % 4, -1}, {2, 5}};
    SAFEARRAY* const array = SafeArrayCreate(type, 1 + number % 2, bounds);
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    unsigned const count = number % 4 * (1 + number % 2);
    // A VARIANT has the size of a PROPVARIANT and its layout.
    for (unsigned i = 0; i < count; ++i) {
        makeElement(type, number + i, static_cast<char*>(data) + i * sizeOf(type));
    }
    SafeArrayUnaccessData(array);
    return array;
}

std::string hex(void const* bytes, std::size_t size) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        char two[3];
        std::snprintf(two, sizeof two, "%02x", static_cast<unsigned char const*>(bytes)[i]);
        text += two;
    }
    return text;
}

std::string elementText(VARTYPE type, void const* place) {
    switch (type) {
        case VT_LPSTR:
            return *static_cast<char* const*>(place);
        case VT_LPWSTR:
            return com::toUtf8(*static_cast<OLECHAR* const*>(place));
        case VT_BSTR: {
            BSTR const text = *static_cast<BSTR const*>(place);
            return com::toUtf8({text, SysStringLen(text)});
        }
        case VT_BLOB: {
            auto const& blob = *static_cast<BLOB const*>(place);
            return hex(blob.pBlobData, blob.cbSize);
        }
        case VT_CF: {
            auto const& data = *static_cast<CLIPDATA const*>(place);
            return std::to_string(data.ulClipFmt) + ' ' + hex(data.pClipData, CBPCLIPDATA(data));
        }
        case VT_VARIANT:
            return valueText(*static_cast<PROPVARIANT const*>(place));
        default:
            return hex(place, sizeOf(type));
    }
}

std::string elementTexts(VARTYPE type, std::size_t count, void const* data) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        text += '|' + elementText(type, static_cast<char const*>(data) + i * sizeOf(type));
    }
    return text;
}

std::string arrayText(VARTYPE type, SAFEARRAY* array) {
    std::string text;
    std::size_t count = 1;
    for (UINT i = 1; i <= SafeArrayGetDim(array); ++i) {
        LONG low = 0, high = 0;
        SafeArrayGetLBound(array, i, &low);
        SafeArrayGetUBound(array, i, &high);
        text += '[' + std::to_string(low) + ".." + std::to_string(high) + ']';
        count *= static_cast<std::size_t>(high - low + 1);
    }
    void* data = nullptr;
    SafeArrayAccessData(array, &data);
    text += elementTexts(type, count, data);
    SafeArrayUnaccessData(array);
    return text;
}

}  // namespace

std::span<ValueKind const> valueKinds() {
    return kinds;
}

void makeValue(VARTYPE type, unsigned number, PROPVARIANT& value) {
    auto const element = static_cast<VARTYPE>(type & VT_TYPEMASK);
    std::size_t const size = sizeOf(element);
    if ((type & VT_ARRAY) != 0) {
        value.parray = makeArray(element, number);
    } else if ((type & VT_VECTOR) != 0) {
        ULONG const count = number % 5;
        value.cac = {count, taskCopy(std::string(count * size, '\0'))};
        for (ULONG i = 0; i < count; ++i) {
            makeElement(element, number + i, value.cac.pElems + i * size);
        }
    } else if (type == VT_CLSID || type == VT_CF) {
        value.pszVal = taskCopy(std::string(size, '\0'));
        makeElement(type, number, value.pszVal);
    } else {
        makeElement(type, number, type == VT_DECIMAL ? static_cast<void*>(&value) : &value.bVal);
    }
    value.vt = type;
}

std::string valueText(PROPVARIANT const& value) {
    auto const element = static_cast<VARTYPE>(value.vt & VT_TYPEMASK);
    std::string const type = std::to_string(value.vt) + ' ';
    if (value.vt == VT_EMPTY) return "empty";
    if ((value.vt & VT_ARRAY) != 0) return type + arrayText(element, value.parray);
    if ((value.vt & VT_VECTOR) != 0) {
        return type + elementTexts(element, value.cac.cElems, value.cac.pElems);
    }
    if (value.vt == VT_DECIMAL) return type + hex(&value.decVal.signscale, 14);
    bool const isLedTo = value.vt == VT_CLSID || value.vt == VT_CF;
    return type +
           elementText(value.vt, isLedTo ? static_cast<void const*>(value.puuid) : &value.bVal);
}

}  // namespace velk::test
