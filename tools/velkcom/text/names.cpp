#include "text/names.h"

#include <algorithm>
#include <cstdint>

#include <objbase.h>

#include "com/utf.h"

namespace velk::velkcom {
namespace {

// clang-format off
constexpr TypeNames typeNames[] = {
{VT_EMPTY, "VT_EMPTY", "empty", nullptr},
{VT_NULL, "VT_NULL", "null", nullptr},
{VT_I2, "VT_I2", "short", "short"},
{VT_I4, "VT_I4", "long", "int"},
{VT_R4, "VT_R4", "float", "single"},
{VT_R8, "VT_R8", "double", "double"},
{VT_CY, "VT_CY", "CURRENCY", "currency"},
{VT_DATE, "VT_DATE", "DATE", "date"},
{VT_BSTR, "VT_BSTR", "BSTR", "string"},
{VT_DISPATCH, "VT_DISPATCH", "IDispatch*", nullptr},
{VT_ERROR, "VT_ERROR", "SCODE", "error"},
{VT_BOOL, "VT_BOOL", "VARIANT_BOOL", "bool"},
{VT_VARIANT, "VT_VARIANT", "VARIANT", nullptr},
{VT_UNKNOWN, "VT_UNKNOWN", "IUnknown*", nullptr},
{VT_DECIMAL, "VT_DECIMAL", "DECIMAL", "decimal"},
{VT_I1, "VT_I1", "char", "int8"},
{VT_UI1, "VT_UI1", "unsigned char", "byte"},
{VT_UI2, "VT_UI2", "unsigned short", "ushort"},
{VT_UI4, "VT_UI4", "unsigned long", "uint"},
{VT_I8, "VT_I8", "hyper", "int64"},
{VT_UI8, "VT_UI8", "unsigned hyper", "uint64"},
{VT_INT, "VT_INT", "int", "int"},
{VT_UINT, "VT_UINT", "unsigned int", "uint"},
{VT_VOID, "VT_VOID", "void", nullptr},
{VT_HRESULT, "VT_HRESULT", "HRESULT", nullptr},
{VT_LPSTR, "VT_LPSTR", "LPSTR", nullptr},
{VT_LPWSTR, "VT_LPWSTR", "LPWSTR", nullptr},
{VT_INT_PTR, "VT_INT_PTR", "INT_PTR", nullptr},
{VT_UINT_PTR, "VT_UINT_PTR", "UINT_PTR", nullptr},
{VT_FILETIME, "VT_FILETIME", "FILETIME", nullptr},
{VT_BLOB, "VT_BLOB", nullptr, nullptr},
{VT_STREAM, "VT_STREAM", nullptr, nullptr},
{VT_STORAGE, "VT_STORAGE", nullptr, nullptr},
{VT_STREAMED_OBJECT, "VT_STREAMED_OBJECT", nullptr, nullptr},
{VT_STORED_OBJECT, "VT_STORED_OBJECT", nullptr, nullptr},
{VT_BLOB_OBJECT, "VT_BLOB_OBJECT", nullptr, nullptr},
{VT_CF, "VT_CF", nullptr, nullptr},
{VT_CLSID, "VT_CLSID", nullptr, nullptr},
{VT_VERSIONED_STREAM, "VT_VERSIONED_STREAM", nullptr, nullptr},
};
// clang-format on

// C0, DEL and C1: what terminals take for orders.
bool isControl(OLECHAR unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
}

/// Of the types that both kinds of values hold in the same way.
template <typename Value>
std::optional<std::string> commonNumber(Value const& value) {
    switch (value.vt) {
        case VT_I1:
            return numberText(static_cast<int>(static_cast<signed char>(value.bVal)));
        case VT_UI1:
            return numberText(unsigned{value.bVal});
        case VT_I2:
            return numberText(value.iVal);
        case VT_UI2:
            return numberText(value.uiVal);
        case VT_BOOL:
            return numberText(value.boolVal);
        case VT_I4:
        case VT_INT:
            return numberText(value.lVal);
        case VT_UI4:
        case VT_UINT:
            return numberText(value.ulVal);
        case VT_R4:
            return numberText(value.fltVal);
        case VT_R8:
            return numberText(value.dblVal);
        case VT_DATE:
            return numberText(value.date);
        default:
            return std::nullopt;
    }
}

}  // namespace

std::span<TypeNames const> allTypeNames() {
    return typeNames;
}

TypeNames const& namesOf(VARTYPE type) {
    static constexpr TypeNames unknown{VT_EMPTY, nullptr, nullptr, nullptr};
    auto const* const found = std::ranges::find(typeNames, type, &TypeNames::type);
    return found != std::end(typeNames) ? *found : unknown;
}

std::string nameText(std::basic_string_view<OLECHAR> text) {
    std::basic_string<OLECHAR> name(text);
    std::ranges::replace_if(name, isControl, OLECHAR{'?'});
    return com::toUtf8(name);
}

std::string quoted(std::basic_string_view<OLECHAR> text) {
    auto const isSpecial = [](OLECHAR c) { return c == '"' || c == '\\' || isControl(c); };
    std::string out = "\"";
    for (;;) {
        auto const end = std::ranges::find_if(text, isSpecial);
        auto const plain = static_cast<std::size_t>(end - text.begin());
        out += com::toUtf8(text.substr(0, plain));
        if (end == text.end()) return out + "\"";
        if (*end == '\n') {
            out += "\\n";
        } else if (isControl(*end)) {
            out += "\\x" + hexadecimal(static_cast<std::uint16_t>(*end), 2).substr(2);
        } else {
            out += {'\\', static_cast<char>(*end)};
        }
        text.remove_prefix(plain + 1);
    }
}

std::string hexadecimal(unsigned long long value, int digits) {
    char buffer[17];
    auto const end = std::to_chars(buffer, buffer + sizeof buffer, value, 16).ptr;
    std::string text(buffer, end);
    if (static_cast<int>(text.size()) < digits) text.insert(0, digits - text.size(), '0');
    return "0x" + text;
}

std::string guidText(GUID const& id) {
    auto const part = [](unsigned long long value, int digits) {
        return hexadecimal(value, digits).substr(2);
    };
    std::string text = part(id.Data1, 8) + "-" + part(id.Data2, 4) + "-" + part(id.Data3, 4) + "-";
    for (int i = 0; i < 8; ++i) {
        if (i == 2) text += "-";
        text += part(id.Data4[i], 2);
    }
    return text;
}

std::string idText(GUID const& id) {
    OLECHAR text[40] = {};
    StringFromGUID2(id, text, 40);
    return com::toUtf8(text);
}

std::optional<std::string> storedNumber(VARIANT const& value) {
    if (value.vt == VT_I8) return numberText(value.llVal);
    if (value.vt == VT_UI8) return numberText(value.ullVal);
    return commonNumber(value);
}

std::optional<std::string> storedNumber(PROPVARIANT const& value) {
    if (value.vt == VT_I8) return numberText(value.hVal.QuadPart);
    if (value.vt == VT_UI8) return numberText(value.uhVal.QuadPart);
    return commonNumber(value);
}

std::string joined(std::vector<std::string> const& parts) {
    std::string text;
    for (auto const& part : parts) {
        if (!text.empty()) text += ", ";
        text += part;
    }
    return text;
}

}  // namespace velk::velkcom
