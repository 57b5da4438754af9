#include <algorithm>
#include <string>

#include "conversion.h"
#include "date_text.h"
#include "number_source.h"

namespace velk::platform {
namespace {

HRESULT setText(std::u16string_view text, VARIANT& result) noexcept {
    result.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    return result.bstrVal == nullptr ? E_OUTOFMEMORY : S_OK;
}

HRESULT truthToText(VARIANT_BOOL value, Conversion const& conversion, VARIANT& result) {
    if ((conversion.flags & VARIANT_LOCALBOOL) != 0) {
        Locale const& locale = conversion.locale();
        return setText(value != 0 ? locale.trueText : locale.falseText, result);
    }
    if ((conversion.flags & VARIANT_ALPHABOOL) != 0) {
        return setText(value != 0 ? u"True" : u"False", result);
    }
    std::string const digits = std::to_string(value);
    return setText(std::u16string(digits.begin(), digits.end()), result);
}

HRESULT numberToText(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    Number number;
    HRESULT const status = readNumber(source, conversion, number);
    if (FAILED(status)) return status;
    std::string const digits = number.kind == Number::Kind::real
                                   ? textOf(number.real, number.digits)
                                   : textOf(number.exact);
    std::u16string text(digits.begin(), digits.end());
    // The names of what is no number keep their full stop.
    if (digits.find('#') == std::string::npos) {
        std::replace(text.begin(), text.end(), u'.', conversion.locale().decimalSeparator);
    }
    return setText(text, result);
}

}  // namespace

HRESULT toText(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    switch (source.vt) {
        case VT_EMPTY:
            return setText(u"", result);
        case VT_BOOL:
            return truthToText(source.boolVal, conversion, result);
        case VT_DATE: {
            std::u16string text;
            HRESULT const status = formatDate(source.date, conversion.locale(), 0, text);
            return FAILED(status) ? status : setText(text, result);
        }
        default:
            return numberToText(source, conversion, result);
    }
}

}  // namespace velk::platform
