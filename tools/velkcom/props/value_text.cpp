#include "props/value_text.h"

#include <algorithm>

#include "com/error.h"
#include "com/stored_properties.h"
#include "com/utf.h"
#include "text/names.h"

namespace velk::velkcom {
namespace {

constexpr ULONGLONG ticksPerSecond = 10'000'000;

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
            return listText(value.cadbl, numberText<double>);
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
        case VT_ERROR:
            return com::hexadecimal(value.scode);
        case VT_CY:
            return numberText(static_cast<double>(value.cyVal.int64) / 10000);
        case VT_CLSID:
            return value.puuid != nullptr ? idText(*value.puuid) : "";
        case VT_BLOB:
        case VT_BLOB_OBJECT:
            return sizeText(value.blob.cbSize);
        case VT_CF:
            return value.pclipdata != nullptr ? sizeText(CBPCLIPDATA(*value.pclipdata)) : "";
        default:
            return storedNumber(value).value_or("");
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

struct TextOfScriptForm {
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
    char const* const symbol = namesOf(type).symbol;
    return symbol != nullptr ? symbol : std::to_string(type);
}

std::optional<VARTYPE> typeFromName(std::string const& name) {
    std::string upper = name;
    std::ranges::transform(upper, upper.begin(),
                           [](char c) { return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c; });
    if (!upper.starts_with("VT_")) upper = "VT_" + upper;
    for (TypeNames const& known : allTypeNames()) {
        if (upper == known.symbol && canBeWritten(known.type)) return known.type;
    }
    return {};
}

std::string valueText(PROPVARIANT const& value) {
    return std::visit(TextOfScriptForm{value}, com::readScriptForm(value));
}

}  // namespace velk::velkcom
