// Members that give back what they got.
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {

HRESULT Sample::EchoI1(CHAR value, CHAR* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoI2(SHORT value, SHORT* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoI4(LONG value, LONG* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoI8(LONGLONG value, LONGLONG* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoUI1(BYTE value, BYTE* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoUI2(USHORT value, USHORT* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoUI4(ULONG value, ULONG* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoUI8(ULONGLONG value, ULONGLONG* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoInt(INT value, INT* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoUInt(UINT value, UINT* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoR4(FLOAT value, FLOAT* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoR8(DOUBLE value, DOUBLE* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoCy(CY value, CY* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoDate(DATE value, DATE* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoDecimal(DECIMAL value, DECIMAL* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoBool(VARIANT_BOOL value, VARIANT_BOOL* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoError(SCODE value, SCODE* result) noexcept {
    return give(result, value);
}
HRESULT Sample::EchoColor(LONG value, LONG* result) noexcept {
    return give(result, value);
}

HRESULT Sample::EchoBstr(BSTR value, BSTR* result) noexcept {
    return giveText(result, com::viewBstr(value));
}
HRESULT Sample::EchoVariant(VARIANT value, VARIANT* result) noexcept {
    return giveVariant(result, value);
}
HRESULT Sample::EchoDispatch(IDispatch* value, IDispatch** result) noexcept {
    return giveObject(result, value);
}
HRESULT Sample::EchoUnknown(IUnknown* value, IUnknown** result) noexcept {
    return giveObject(result, value);
}
HRESULT Sample::EchoArray(SAFEARRAY* value, SAFEARRAY** result) noexcept {
    return result ? SafeArrayCopy(value, result) : E_POINTER;
}
HRESULT Sample::EchoRecord(VARIANT record, VARIANT* result) noexcept {
    bool const isRecord = (record.vt & ~VT_BYREF) == VT_RECORD;
    return isRecord ? giveVariant(result, record) : DISP_E_TYPEMISMATCH;
}

}  // namespace velk::test::server
