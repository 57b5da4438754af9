#include "com/stored_properties.h"

#include <array>
#include <charconv>

namespace velk::com {
namespace {

using Text = std::basic_string<OLECHAR>;

Text wide(char const* ascii) {
    return Text(ascii, ascii + std::char_traits<char>::length(ascii));
}

Text textOrEmpty(OLECHAR const* text) {
    return text != nullptr ? Text(text) : Text();
}

}  // namespace

Text localTimeText(FILETIME const& time) {
    SYSTEMTIME utc{};
    if (!FileTimeToSystemTime(&time, &utc)) return {};
    SYSTEMTIME local{};
    if (!SystemTimeToTzSpecificLocalTime(nullptr, &utc, &local)) local = utc;
    struct Part {
        unsigned number;
        unsigned leastDigits;
        char behind;
    };
    Text text;
    for (Part const& part :
         {Part{local.wDay, 2, '.'}, Part{local.wMonth, 2, '.'}, Part{local.wYear, 1, ' '},
          Part{local.wHour, 2, ':'}, Part{local.wMinute, 2, ':'}, Part{local.wSecond, 2, '.'},
          Part{local.wMilliseconds, 3, 0}}) {
        std::array<char, 8> digits;
        auto const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), part.number).ptr;
        auto const count = static_cast<std::size_t>(end - digits.data());
        text.append(part.leastDigits > count ? part.leastDigits - count : 0, OLESTR('0'));
        text.append(digits.data(), end);
        if (part.behind != 0) text += static_cast<OLECHAR>(part.behind);
    }
    return text;
}

ScriptForm readScriptForm(PROPVARIANT const& value) {
    switch (value.vt) {
        case VT_I2:
            return std::int32_t{static_cast<std::uint16_t>(value.iVal)};
        case VT_I4:
            return static_cast<std::int32_t>(value.lVal);
        case VT_R4:
            return double{value.fltVal};
        case VT_R8:
            return value.dblVal;
        case VT_BSTR:
            return Text(viewBstr(value.bstrVal));
        case VT_BOOL:
            return value.boolVal == VARIANT_TRUE;
        case VT_LPSTR:
            return ByteText{value.pszVal != nullptr ? value.pszVal : ""};
        case VT_LPWSTR:
            return textOrEmpty(value.pwszVal);
        case VT_FILETIME:
            return localTimeText(value.filetime);
        default:
            return {};
    }
}

Text StoredProperty::key() const {
    return name ? *name : wide(std::to_string(id).c_str());
}

HRESULT readNextProperty(IEnumSTATPROPSTG& from, IPropertyStorage& set, StoredProperty& out) {
    for (;;) {
        STATPROPSTG entry{};
        ULONG fetched = 0;
        HRESULT const code = from.Next(1, &entry, &fetched);
        if (code != S_OK) return code;
        TaskMemory const name(entry.lpwstrName);
        PROPSPEC specifier{};
        specifier.ulKind = PRSPEC_PROPID;
        specifier.propid = entry.propid;
        PropVariant value;
        if (FAILED(set.ReadMultiple(1, &specifier, value.address()))) continue;
        out.id = entry.propid;
        out.name = name.get() != nullptr ? std::optional(taskText(name)) : std::nullopt;
        out.type = entry.vt;
        out.value = std::move(value);
        return S_OK;
    }
}

}  // namespace velk::com
