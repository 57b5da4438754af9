#include <cmath>
#include <limits>

#include "calendar.h"
#include "conversion.h"
#include "date_text.h"
#include "number_source.h"

namespace velk::platform {
namespace {

// Half a unit in the last place above the greatest float: what is smaller
// still rounds to it.
constexpr double firstBeyondSingle = 0x1.ffffffp127;

HRESULT readReal(VARIANT const& source, Conversion const& conversion, double& value) noexcept {
    Number number;
    HRESULT const status = readNumber(source, conversion, number);
    return FAILED(status) ? status : realOf(number, value);
}

}  // namespace

HRESULT toFloating(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    double value = 0;
    HRESULT const status = readReal(source, conversion, value);
    if (FAILED(status)) return status;
    if (conversion.type == VT_R8) {
        result.dblVal = value;
        return S_OK;
    }
    if (std::fabs(value) >= firstBeyondSingle) return DISP_E_OVERFLOW;
    result.fltVal = static_cast<float>(value);
    return S_OK;
}

HRESULT toDate(VARIANT const& source, Conversion const& conversion, VARIANT& result) {
    if (source.vt == VT_BSTR) {
        return parseDate(source.bstrVal, conversion.locale(), 0, result.date);
    }
    double value = 0;
    HRESULT const status = readReal(source, conversion, value);
    if (FAILED(status)) return status;
    if (!isDate(value)) return DISP_E_OVERFLOW;
    result.date = value;
    return S_OK;
}

}  // namespace velk::platform
