// Members that give back what they got.
#include "servers/automation/giving.h"
#include "servers/automation/sample.h"

namespace velk::test::server {

#define VELK_ECHO(name, Type)                                 \
    HRESULT Sample::name(Type value, Type* result) noexcept { \
        return give(result, value);                           \
    }
VELK_ECHO(EchoI1, CHAR)
VELK_ECHO(EchoI2, SHORT)
VELK_ECHO(EchoI4, LONG)
VELK_ECHO(EchoI8, LONGLONG)
VELK_ECHO(EchoUI1, BYTE)
VELK_ECHO(EchoUI2, USHORT)
VELK_ECHO(EchoUI4, ULONG)
VELK_ECHO(EchoUI8, ULONGLONG)
VELK_ECHO(EchoInt, INT)
VELK_ECHO(EchoUInt, UINT)
VELK_ECHO(EchoR4, FLOAT)
VELK_ECHO(EchoR8, DOUBLE)
VELK_ECHO(EchoCy, CY)
VELK_ECHO(EchoDate, DATE)
VELK_ECHO(EchoDecimal, DECIMAL)
VELK_ECHO(EchoBool, VARIANT_BOOL)
VELK_ECHO(EchoError, SCODE)
VELK_ECHO(EchoColor, LONG)
#undef VELK_ECHO

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
