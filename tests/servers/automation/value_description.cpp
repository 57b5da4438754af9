#include "servers/automation/value_description.h"

#include <cstdio>
#include <cstring>

#include "com/owners.h"

namespace velk::test::server {
namespace {

struct NamedType {
    VARTYPE type;
    char const* name;
    /// Of a value behind a reference, in bytes; 0 when it has none.
    std::size_t size;
};

constexpr NamedType namedTypes[] = {
    {VT_EMPTY, "VT_EMPTY", 0},
    {VT_NULL, "VT_NULL", 0},
    {VT_I2, "VT_I2", 2},
    {VT_I4, "VT_I4", 4},
    {VT_R4, "VT_R4", 4},
    {VT_R8, "VT_R8", 8},
    {VT_CY, "VT_CY", 8},
    {VT_DATE, "VT_DATE", 8},
    {VT_BSTR, "VT_BSTR", sizeof(void*)},
    {VT_DISPATCH, "VT_DISPATCH", sizeof(void*)},
    {VT_ERROR, "VT_ERROR", 4},
    {VT_BOOL, "VT_BOOL", 2},
    {VT_VARIANT, "VT_VARIANT", 0},
    {VT_UNKNOWN, "VT_UNKNOWN", sizeof(void*)},
    {VT_DECIMAL, "VT_DECIMAL", sizeof(DECIMAL)},
    {VT_I1, "VT_I1", 1},
    {VT_UI1, "VT_UI1", 1},
    {VT_UI2, "VT_UI2", 2},
    {VT_UI4, "VT_UI4", 4},
    {VT_I8, "VT_I8", 8},
    {VT_UI8, "VT_UI8", 8},
    {VT_INT, "VT_INT", 4},
    {VT_UINT, "VT_UINT", 4},
    {VT_RECORD, "VT_RECORD", 0},
};

// References to VARIANTs may lead in a circle.
constexpr int deepestReference = 3;

constexpr LCID english = 0x0409;

NamedType const* findType(VARTYPE type) {
    for (auto const& entry : namedTypes) {
        if (entry.type == type) return &entry;
    }
    return nullptr;
}

Text hexadecimal(unsigned long number, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*lX", digits, number);
    return textOf(text);
}

Text typeName(VARTYPE type) {
    Text name;
    if (type & VT_BYREF) name += OLESTR("VT_BYREF|");
    if (type & VT_ARRAY) name += OLESTR("VT_ARRAY|");
    auto const plain = static_cast<VARTYPE>(type & ~(VT_BYREF | VT_ARRAY));
    auto const* known = findType(plain);
    return name + (known ? textOf(known->name) : hexadecimal(plain, 4));
}

Text boundsOf(SAFEARRAY* array) {
    if (!array) return OLESTR("null");
    Text text = OLESTR("[");
    for (UINT dimension = 1; dimension <= SafeArrayGetDim(array); ++dimension) {
        LONG lower = 0, upper = 0;
        SafeArrayGetLBound(array, dimension, &lower);
        SafeArrayGetUBound(array, dimension, &upper);
        if (dimension > 1) text += OLESTR(", ");
        text += textOf((std::to_string(lower) + ".." + std::to_string(upper)).c_str());
    }
    return text + OLESTR("]");
}

Text recordName(VARIANT const& value) {
    com::Bstr name;
    bool const named = value.pRecInfo && SUCCEEDED(value.pRecInfo->GetName(name.put()));
    return named ? Text(com::viewBstr(name)) : Text(OLESTR("null"));
}

Text number(VARIANT const& value) {
    com::Variant text;
    HRESULT const code = VariantChangeTypeEx(text.address(), const_cast<VARIANT*>(&value), english,
                                             VARIANT_NOUSEROVERRIDE, VT_BSTR);
    return FAILED(code) ? Text(OLESTR("?")) : Text(com::viewBstr(text.get().bstrVal));
}

Text contents(VARIANT const& value, int depth);

Text behindReference(VARIANT const& value, int depth) {
    auto const type = static_cast<VARTYPE>(value.vt & ~VT_BYREF);
    if (!value.byref) return OLESTR("null");
    if (type == VT_VARIANT) {
        if (depth == deepestReference) return OLESTR("...");
        auto const& inner = *value.pvarVal;
        auto const inside = contents(inner, depth + 1);
        return OLESTR("(") + typeName(inner.vt) + (inside.empty() ? Text() : OLESTR(" ") + inside) +
               OLESTR(")");
    }
    if (type == VT_RECORD) return recordName(value);
    VARIANT direct{};
    auto const* known = findType(type);
    std::size_t const size = type & VT_ARRAY ? sizeof(void*) : known ? known->size : 0;
    if (size == 0) return OLESTR("?");
    if (type == VT_DECIMAL) {
        direct.decVal = *value.pdecVal;
    } else {
        std::memcpy(&direct.llVal, value.byref, size);
    }
    direct.vt = type;
    return contents(direct, depth);
}

Text contents(VARIANT const& value, int depth) {
    if (value.vt & VT_BYREF) return behindReference(value, depth);
    if (value.vt & VT_ARRAY) return boundsOf(value.parray);
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return {};
        case VT_BSTR:
            if (!value.bstrVal) return OLESTR("null");
            return OLESTR("\"") + Text(com::viewBstr(value.bstrVal)) + OLESTR("\"");
        case VT_DISPATCH:
        case VT_UNKNOWN:
            return value.punkVal ? OLESTR("object") : OLESTR("null");
        case VT_ERROR:
            return hexadecimal(static_cast<ULONG>(value.scode), 8);
        case VT_BOOL:
            return value.boolVal ? OLESTR("True") : OLESTR("False");
        case VT_RECORD:
            return recordName(value);
        default:
            return findType(value.vt) ? number(value) : Text(OLESTR("?"));
    }
}

}  // namespace

Text textOf(char const* ascii) {
    return Text(ascii, ascii + std::strlen(ascii));
}

Text describeValue(VARIANT const& value) {
    auto const inside = contents(value, 0);
    return typeName(value.vt) + (inside.empty() ? Text() : OLESTR(" ") + inside);
}

Text describeCall(WORD flags, DISPPARAMS const* parameters) {
    DISPPARAMS const none{};
    auto const& given = parameters ? *parameters : none;
    Text text = OLESTR("flags=") + textOf(std::to_string(flags).c_str()) + OLESTR(" args=[");
    for (UINT i = 0; i < given.cArgs; ++i) {
        if (i > 0) text += OLESTR(", ");
        text += describeValue(given.rgvarg[i]);
    }
    text += OLESTR("] named=") + textOf(std::to_string(given.cNamedArgs).c_str());
    for (UINT i = 0; i < given.cNamedArgs; ++i) {
        text += i == 0 ? OLESTR(" (") : OLESTR(", ");
        text += textOf(std::to_string(given.rgdispidNamedArgs[i]).c_str());
    }
    return given.cNamedArgs > 0 ? text + OLESTR(")") : text;
}

}  // namespace velk::test::server
