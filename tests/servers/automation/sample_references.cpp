// Members that change what they get by reference.
#include <utility>

#include "servers/automation/arrays.h"
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"
#include "servers/automation/sample_records.h"

namespace velk::test::server {
namespace {

// The units of currency are ten-thousandths.
constexpr LONGLONG currencyUnit = 10000;

void exclaim(BSTR& text) {
    Text changed(com::viewBstr(text));
    changed += OLESTR('!');
    com::Bstr const old(std::exchange(text, com::makeBstr(changed).release()));
}

void changeValue(VARIANT& value) {
    if (value.vt == VT_I4) {
        // Without regard to overflow.
        value.lVal = static_cast<LONG>(2 * static_cast<ULONG>(value.lVal));
    } else if (value.vt == VT_BSTR) {
        exclaim(value.bstrVal);
    } else {
        com::Variant const old(std::exchange(value, textVariant(OLESTR("changed")).release()));
    }
}

void appendAdded(SAFEARRAY& array) {
    com::throwIfFailed(SafeArrayGetDim(&array) == 1 ? S_OK : DISP_E_TYPEMISMATCH);
    auto added = textVariant(OLESTR("added"));
    SAFEARRAYBOUND bound = array.rgsabound[0];
    LONG index = bound.lLbound + static_cast<LONG>(bound.cElements);
    ++bound.cElements;
    com::throwIfFailed(SafeArrayRedim(&array, &bound));
    com::throwIfFailed(SafeArrayPutElement(&array, &index, added.address()));
}

void addOne(SAFEARRAY& array) {
    com::throwIfFailed(SafeArrayGetDim(&array) == 1 ? S_OK : DISP_E_TYPEMISMATCH);
    auto* const numbers = static_cast<LONG*>(array.pvData);
    for (ULONG i = 0; i < array.rgsabound[0].cElements; ++i) ++numbers[i];
}

/// Runs `change` on what `place` points at. E_POINTER, or what it throws.
template <typename Place, typename Change>
HRESULT change(Place* place, Change action) noexcept {
    if (!place) return E_POINTER;
    try {
        action(*place);
        return S_OK;
    }
    VELK_COM_CATCH
}

}  // namespace

HRESULT Sample::ChangeShort(SHORT* number) noexcept {
    return change(number, [](SHORT& value) { ++value; });
}
HRESULT Sample::ChangeLong(LONG* number) noexcept {
    return change(number, [](LONG& value) { ++value; });
}
HRESULT Sample::ChangeDouble(DOUBLE* number) noexcept {
    return change(number, [](DOUBLE& value) { value *= 2; });
}
HRESULT Sample::ChangeBool(VARIANT_BOOL* truth) noexcept {
    return change(truth, [](VARIANT_BOOL& value) { value = value ? VARIANT_FALSE : VARIANT_TRUE; });
}
HRESULT Sample::ChangeCurrency(CY* amount) noexcept {
    return change(amount, [](CY& value) { value.int64 += currencyUnit; });
}
HRESULT Sample::ChangeDate(DATE* day) noexcept {
    return change(day, [](DATE& value) { value += 1; });
}
HRESULT Sample::ChangeText(BSTR* text) noexcept {
    return change(text, exclaim);
}
HRESULT Sample::ChangeVariant(VARIANT* value) noexcept {
    return change(value, changeValue);
}
HRESULT Sample::ChangeArray(SAFEARRAY** values) noexcept {
    return values ? change(*values, appendAdded) : E_POINTER;
}
HRESULT Sample::ChangeLongs(SAFEARRAY** numbers) noexcept {
    return numbers ? change(*numbers, addOne) : E_POINTER;
}
HRESULT Sample::ChangeDispatch(IDispatch** object) noexcept {
    return change(object, [this](IDispatch*& place) {
        com::ComPtr<IDispatch> kept;
        {
            std::lock_guard const guard(mutex_);
            kept = kept_;
        }
        com::ComPtr<IDispatch> const old(std::exchange(place, kept.detach()), com::adopt);
    });
}
HRESULT Sample::ChangePoint(Point* point) noexcept {
    return change(point, [](Point& place) { std::swap(place.x, place.y); });
}
HRESULT Sample::ChangePerson(Person* person) noexcept {
    return change(person, [](Person& place) {
        exclaim(place.name);
        ++place.home.x;
    });
}
HRESULT Sample::ChangeRecord(VARIANT* record) noexcept {
    return change(record, [](VARIANT& value) {
        auto& point = pointIn(value);
        std::swap(point.x, point.y);
    });
}

}  // namespace velk::test::server
