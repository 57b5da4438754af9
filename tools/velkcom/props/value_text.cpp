#include "props/value_text.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "com/error.h"
#include "com/stored_properties.h"
#include "com/utf.h"

namespace velk::velkcom {
namespace {

struct TypeName {
    VARTYPE type;
    char const* name;
};

constexpr TypeName typeNames[] = {{VT_EMPTY, "VT_EMPTY"},
                                  {VT_NULL, "VT_NULL"},
                                  {VT_I2, "VT_I2"},
                                  {VT_I4, "VT_I4"},
                                  {VT_R4, "VT_R4"},
                                  {VT_R8, "VT_R8"},
                                  {VT_CY, "VT_CY"},
                                  {VT_DATE, "VT_DATE"},
                                  {VT_BSTR, "VT_BSTR"},
                                  {VT_ERROR, "VT_ERROR"},
                                  {VT_BOOL, "VT_BOOL"},
                                  {VT_VARIANT, "VT_VARIANT"},
                                  {VT_DECIMAL, "VT_DECIMAL"},
                                  {VT_I1, "VT_I1"},
                                  {VT_UI1, "VT_UI1"},
                                  {VT_UI2, "VT_UI2"},
                                  {VT_UI4, "VT_UI4"},
                                  {VT_I8, "VT_I8"},
                                  {VT_UI8, "VT_UI8"},
                                  {VT_INT, "VT_INT"},
                                  {VT_UINT, "VT_UINT"},
                                  {VT_LPSTR, "VT_LPSTR"},
                                  {VT_LPWSTR, "VT_LPWSTR"},
                                  {VT_FILETIME, "VT_FILETIME"},
                                  {VT_BLOB, "VT_BLOB"},
                                  {VT_STREAM, "VT_STREAM"},
                                  {VT_STORAGE, "VT_STORAGE"},
                                  {VT_STREAMED_OBJECT, "VT_STREAMED_OBJECT"},
                                  {VT_STORED_OBJECT, "VT_STORED_OBJECT"},
                                  {VT_BLOB_OBJECT, "VT_BLOB_OBJECT"},
                                  {VT_CF, "VT_CF"},
                                  {VT_CLSID, "VT_CLSID"},
                                  {VT_VERSIONED_STREAM, "VT_VERSIONED_STREAM"}};

constexpr ULONGLONG ticksPerSecond = 10'000'000;

std::string numberText(double value) {
    std::array<char, 32> text;
    auto const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

std::string idText(GUID const& id) {
    OLECHAR text[40] = {};
    StringFromGUID2(id, text, 40);
    return com::toUtf8(text);
}

std::string sizeText(ULONG size) {
    return "(" + std::to_string(size) + " bytes)";
}

template <typename Elements, typename Text>
std::string listText(Elements const& elements, Text text) {
    std::string all = "[";
    for (ULONG i = 0; i < elements.cElems; ++i) {
        all += (i == 0 ? "" : ", ") + text(elements.pElems[i]);
    }
    return all + "]";
}

std::string byteText(char const* bytes) {
    return com::toUtf8(com::fromUtf8Leniently(bytes != nullptr ? bytes : ""));
}

std::string vectorText(PROPVARIANT const& value) {
    switch (value.vt & ~VT_VECTOR) {
        case VT_LPSTR:
            return listText(value.calpstr, byteText);
        case VT_LPWSTR:
            return listText(value.calpwstr, [](OLECHAR const* text) {
                return com::toUtf8(text != nullptr ? text : OLESTR(""));
            });
        case VT_I4:
            return listText(value.cal, [](LONG number) { return std::to_string(number); });
        case VT_UI4:
            return listText(value.caul, [](ULONG number) { return std::to_string(number); });
        case VT_R8:
            return listText(value.cadbl, numberText);
        case VT_VARIANT:
            return listText(value.capropvar, valueText);
        default:
            return "(" + std::to_string(value.cac.cElems) + " elements)";
    }
}

/// Of a type that scripts do not see.
std::string otherText(PROPVARIANT const& value) {
    if ((value.vt & VT_VECTOR) != 0) return vectorText(value);
    switch (value.vt) {
        case VT_I1:
            return std::to_string(static_cast<signed char>(value.cVal));
        case VT_UI1:
            return std::to_string(value.bVal);
        case VT_UI2:
            return std::to_string(value.uiVal);
        case VT_UI4:
        case VT_UINT:
            return std::to_string(value.ulVal);
        case VT_INT:
            return std::to_string(value.lVal);
        case VT_I8:
            return std::to_string(value.hVal.QuadPart);
        case VT_UI8:
            return std::to_string(value.uhVal.QuadPart);
        case VT_ERROR:
            return com::hexadecimal(value.scode);
        case VT_CY:
            return numberText(static_cast<double>(value.cyVal.int64) / 10000);
        case VT_DATE:
            return numberText(value.date);
        case VT_CLSID:
            return value.puuid != nullptr ? idText(*value.puuid) : "";
        case VT_BLOB:
        case VT_BLOB_OBJECT:
            return sizeText(value.blob.cbSize);
        case VT_CF:
            return value.pclipdata != nullptr ? sizeText(CBPCLIPDATA(*value.pclipdata)) : "";
        default:
            return "";
    }
}

void appendDigits(std::string& text, ULONGLONG number, std::size_t least, char behind = 0) {
    auto const digits = std::to_string(number);
    text.append(least > digits.size() ? least - digits.size() : 0, '0') += digits;
    if (behind != 0) text += behind;
}

std::string timeText(FILETIME const& time) {
    SYSTEMTIME utc{};
    if (!FileTimeToSystemTime(&time, &utc)) return {};
    std::string text;
    appendDigits(text, utc.wYear, 4, '-');
    appendDigits(text, utc.wMonth, 2, '-');
    appendDigits(text, utc.wDay, 2, 'T');
    appendDigits(text, utc.wHour, 2, ':');
    appendDigits(text, utc.wMinute, 2, ':');
    appendDigits(text, utc.wSecond, 2);
    auto const ticks = (ULONGLONG{time.dwHighDateTime} << 32) + time.dwLowDateTime;
    if (ticks % ticksPerSecond != 0) {
        text += '.';
        appendDigits(text, ticks % ticksPerSecond, 7);
        text.resize(text.find_last_not_of('0') + 1);
    }
    return text + 'Z';
}

struct TextOfScriptValue {
    PROPVARIANT const& value;

    std::string operator()(std::monostate) const { return otherText(value); }
    std::string operator()(std::int32_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return numberText(number); }
    std::string operator()(bool isTrue) const { return isTrue ? "true" : "false"; }
    std::string operator()(std::basic_string<OLECHAR> const& text) const {
        if (value.vt == VT_FILETIME) return timeText(value.filetime);
        return com::toUtf8(text);
    }
    std::string operator()(com::ByteText const& text) const { return byteText(text.bytes.c_str()); }
};

}  // namespace

std::string typeName(VARTYPE type) {
    if ((type & VT_VECTOR) != 0) {
        return "VT_VECTOR|" + typeName(static_cast<VARTYPE>(type & ~VT_VECTOR));
    }
    if ((type & VT_ARRAY) != 0) {
        return "VT_ARRAY|" + typeName(static_cast<VARTYPE>(type & ~VT_ARRAY));
    }
    auto const* const known = std::ranges::find(typeNames, type, &TypeName::type);
    return known != std::end(typeNames) ? known->name : std::to_string(type);
}

std::optional<VARTYPE> typeFromName(std::string const& name) {
    std::string upper = name;
    std::ranges::transform(upper, upper.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
    if (!upper.starts_with("VT_")) upper = "VT_" + upper;
    for (TypeName const& known : typeNames) {
        if (upper == known.name && canBeWritten(known.type)) return known.type;
    }
    return {};
}

std::string valueText(PROPVARIANT const& value) {
    return std::visit(TextOfScriptValue{value}, com::readScriptForm(value));
}

}  // namespace velk::velkcom
