#include "typelib/value_text.h"

#include "com/owners.h"
#include "text/names.h"

namespace velk::velkcom {
namespace {

// Currency has four decimals, all of them shown, so that the type is visible.
std::string currencyText(CY value) {
    bool const negative = value.int64 < 0;
    unsigned long long magnitude = static_cast<unsigned long long>(value.int64);
    if (negative) magnitude = 0 - magnitude;
    std::string fraction = numberText(magnitude % 10000);
    fraction.insert(0, 4 - fraction.size(), '0');
    return (negative ? "-" : "") + numberText(magnitude / 10000) + "." + fraction;
}

}  // namespace

std::string valueText(VARIANT const& value) {
    char const* const declared = namesOf(value.vt).declared;
    std::string const type = "(" + std::string(declared != nullptr ? declared : "") + ")";
    switch (value.vt) {
        case VT_EMPTY:
        case VT_NULL:
            return declared;
        case VT_I4:
            return numberText(value.lVal);
        case VT_CY:
            return type + currencyText(value.cyVal);
        case VT_ERROR:
        case VT_HRESULT:
            return type + hexadecimal(static_cast<unsigned>(value.scode), 8);
        case VT_BSTR:
            return value.bstrVal ? quoted(com::viewBstr(value.bstrVal)) : type + "null";
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return type + (value.punkVal ? "object" : "null");
        default:
            break;
    }
    auto const number = storedNumber(value);
    return number ? type + *number : "value of type " + numberText(value.vt);
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

std::string bracketed(std::vector<std::string> const& parts) {
    return parts.empty() ? std::string() : "[" + joined(parts) + "] ";
}

}  // namespace velk::velkcom
