// Members that give values out.
#include "servers/automation/arrays.h"
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {
namespace {

constexpr com::TextView givenText = OLESTR("given");

}  // namespace

HRESULT Sample::GiveLong(LONG* number) noexcept {
    return give(number, LONG{42});
}
HRESULT Sample::GiveDouble(DOUBLE* number) noexcept {
    return give(number, 1.5);
}
HRESULT Sample::GiveBool(VARIANT_BOOL* truth) noexcept {
    return give(truth, VARIANT_BOOL{VARIANT_TRUE});
}
HRESULT Sample::GiveText(BSTR* text) noexcept {
    return giveText(text, givenText);
}
HRESULT Sample::GiveVariant(VARIANT* value) noexcept {
    if (!value) return E_POINTER;
    VariantInit(value);
    HRESULT const code = giveText(&value->bstrVal, givenText);
    if (SUCCEEDED(code)) value->vt = VT_BSTR;
    return code;
}
HRESULT Sample::GiveDispatch(IDispatch** object) noexcept {
    return giveObject<IDispatch>(object, self());
}
HRESULT Sample::GiveUnknown(IUnknown** object) noexcept {
    return giveObject<IUnknown>(object, self());
}
HRESULT Sample::GiveArray(SAFEARRAY** values) noexcept {
    return giveArray(values, [] {
        auto array = makeVector(VT_VARIANT, 3);
        auto* const elements = elementsOf<VARIANT>(array);
        elements[0] = numberVariant(1).release();
        elements[1] = textVariant(OLESTR("two")).release();
        elements[2].vt = VT_R8;
        elements[2].dblVal = 3.5;
        return array;
    });
}
HRESULT Sample::GivePoint(Point* point) noexcept {
    return give(point, Point{3, 4});
}
HRESULT Sample::GiveTwo(LONG* number, BSTR* text, VARIANT_BOOL* result) noexcept {
    if (!number || !text || !result) return E_POINTER;
    *number = 42;
    *result = VARIANT_TRUE;
    return giveText(text, givenText);
}

}  // namespace velk::test::server
