#include "conversion.h"
#include "number_source.h"
#include "text_characters.h"

namespace velk::platform {
namespace {

bool equalsIgnoringCase(OLECHAR const* text, std::u16string_view expected) noexcept {
    for (OLECHAR const character : expected) {
        if (lowerLatin(*text) != lowerLatin(character)) return false;
        ++text;
    }
    return *text == 0;
}

// The words for true and false: English ones in any case, the locale's own
// when it was asked for them, and the notation of program text.
bool readWord(OLECHAR const* text, Conversion const& conversion, VARIANT_BOOL& value) noexcept {
    Locale const& locale = conversion.locale();
    bool const local = (conversion.flags & VARIANT_LOCALBOOL) != 0;
    if (equalsIgnoringCase(text, u"True") || std::u16string_view(text) == u"#TRUE#" ||
        (local && equalsIgnoringCase(text, locale.trueText))) {
        value = VARIANT_TRUE;
        return true;
    }
    if (equalsIgnoringCase(text, u"False") || std::u16string_view(text) == u"#FALSE#" ||
        (local && equalsIgnoringCase(text, locale.falseText))) {
        value = VARIANT_FALSE;
        return true;
    }
    return false;
}

}  // namespace

HRESULT toBoolean(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    if (source.vt == VT_BSTR && source.bstrVal != nullptr &&
        readWord(source.bstrVal, conversion, result.boolVal)) {
        return S_OK;
    }
    Number number;
    HRESULT status = readNumber(source, conversion, number);
    if (FAILED(status)) return status;
    double value = 0;
    status = realOf(number, value);
    if (SUCCEEDED(status)) result.boolVal = value != 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return status;
}

}  // namespace velk::platform
