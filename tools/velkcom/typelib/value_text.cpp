#include "value_text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace velk::tools {
namespace {

void appendUtf8(std::string& out, std::uint32_t point) {
    if (point < 0x80) {
        out += static_cast<char>(point);
    } else if (point < 0x800) {
        out += static_cast<char>(0xC0 | (point >> 6));
        out += static_cast<char>(0x80 | (point & 0x3F));
    } else if (point < 0x10000) {
        out += static_cast<char>(0xE0 | (point >> 12));
        out += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (point & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (point >> 18));
        out += static_cast<char>(0x80 | ((point >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((point >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (point & 0x3F));
    }
}

std::string utf8(std::basic_string_view<OLECHAR> text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t const unit = static_cast<std::uint16_t>(text[i]);
        bool const high = unit >= 0xD800 && unit < 0xDC00;
        std::uint32_t const next =
            i + 1 < text.size() ? static_cast<std::uint16_t>(text[i + 1]) : 0;
        if (high && next >= 0xDC00 && next < 0xE000) {
            appendUtf8(out, 0x10000 + ((unit - 0xD800) << 10) + (next - 0xDC00));
            ++i;
        } else {
            bool const lone = unit >= 0xD800 && unit < 0xE000;
            appendUtf8(out, lone ? 0xFFFD : unit);
        }
    }
    return out;
}

// C0, DEL and C1: what terminals take for orders.
bool isControl(OLECHAR unit) {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
}

template <typename Number>
std::string decimal(Number value) {
    char buffer[64];
    auto const end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    return {buffer, end};
}

// Currency has four decimals, all of them shown, so that the type is visible.
std::string currencyText(CY value) {
    bool const negative = value.int64 < 0;
    unsigned long long magnitude = static_cast<unsigned long long>(value.int64);
    if (negative) magnitude = 0 - magnitude;
    std::string fraction = decimal(magnitude % 10000);
    fraction.insert(0, 4 - fraction.size(), '0');
    return (negative ? "-" : "") + decimal(magnitude / 10000) + "." + fraction;
}

}  // namespace

std::string nameText(std::basic_string_view<OLECHAR> text) {
    std::basic_string<OLECHAR> name(text);
    std::ranges::replace_if(name, isControl, OLECHAR{'?'});
    return utf8(name);
}

std::string quoted(std::basic_string_view<OLECHAR> text) {
    auto const isSpecial = [](OLECHAR c) { return c == '"' || c == '\\' || isControl(c); };
    std::string out = "\"";
    for (;;) {
        auto const end = std::ranges::find_if(text, isSpecial);
        auto const plain = static_cast<std::size_t>(end - text.begin());
        out += utf8(text.substr(0, plain));
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

std::string valueText(VARIANT const& value) {
    switch (value.vt) {
        case VT_EMPTY:
            return "empty";
        case VT_NULL:
            return "null";
        case VT_I1:
            return "(char)" + decimal(static_cast<int>(static_cast<signed char>(value.cVal)));
        case VT_UI1:
            return "(unsigned char)" + decimal(static_cast<unsigned>(value.bVal));
        case VT_I2:
            return "(short)" + decimal(value.iVal);
        case VT_UI2:
            return "(unsigned short)" + decimal(value.uiVal);
        case VT_I4:
            return decimal(value.lVal);
        case VT_UI4:
            return "(unsigned long)" + decimal(value.ulVal);
        case VT_INT:
            return "(int)" + decimal(value.intVal);
        case VT_UINT:
            return "(unsigned int)" + decimal(value.uintVal);
        case VT_I8:
            return "(hyper)" + decimal(value.llVal);
        case VT_UI8:
            return "(unsigned hyper)" + decimal(value.ullVal);
        case VT_R4:
            return "(float)" + decimal(value.fltVal);
        case VT_R8:
            return "(double)" + decimal(value.dblVal);
        case VT_DATE:
            return "(DATE)" + decimal(value.date);
        case VT_CY:
            return "(CURRENCY)" + currencyText(value.cyVal);
        case VT_BOOL:
            return "(VARIANT_BOOL)" + decimal(value.boolVal);
        case VT_ERROR:
            return "(SCODE)" + hexadecimal(static_cast<std::uint32_t>(value.scode), 8);
        case VT_HRESULT:
            return "(HRESULT)" + hexadecimal(static_cast<std::uint32_t>(value.scode), 8);
        case VT_BSTR:
            return value.bstrVal ? quoted({value.bstrVal, SysStringLen(value.bstrVal)})
                                 : "(BSTR)null";
        case VT_UNKNOWN:
            return value.punkVal ? "(IUnknown*)object" : "(IUnknown*)null";
        case VT_DISPATCH:
            return value.pdispVal ? "(IDispatch*)object" : "(IDispatch*)null";
        default:
            return "value of type " + decimal(static_cast<unsigned>(value.vt));
    }
}

std::vector<std::string> flagNames(unsigned flags, std::vector<FlagName> const& names) {
    std::vector<std::string> found;
    for (auto const& entry : names) {
        if (!(flags & entry.bit)) continue;
        found.emplace_back(entry.name);
        flags &= ~entry.bit;
    }
    if (flags) found.push_back("flags(" + hexadecimal(flags) + ")");
    return found;
}

std::string joined(std::vector<std::string> const& parts) {
    std::string text;
    for (auto const& part : parts) {
        if (!text.empty()) text += ", ";
        text += part;
    }
    return text;
}

std::string bracketed(std::vector<std::string> const& parts) {
    return parts.empty() ? std::string() : "[" + joined(parts) + "] ";
}

}  // namespace velk::tools
