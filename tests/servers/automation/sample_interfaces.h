/// The dual interfaces of the sample object. VelkTestLib.idl describes the same,
/// with a comment for every member.
#pragma once

#include <windows.h>

#include <oleauto.h>

namespace velk::test::server {

struct Point {
    LONG x;
    LONG y;
};

struct Person {
    BSTR name;
    Point home;
    VARIANT data;
    SAFEARRAY* numbers;
};

/// Described without an identifier.
struct Loose {
    LONG x;
    LONG y;
};

struct ISample : IDispatch {
    // Values by value: each gives back what it got.
    virtual HRESULT STDMETHODCALLTYPE EchoI1(CHAR value, CHAR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoI2(SHORT value, SHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoI4(LONG value, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoI8(LONGLONG value, LONGLONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUI1(BYTE value, BYTE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUI2(USHORT value, USHORT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUI4(ULONG value, ULONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUI8(ULONGLONG value, ULONGLONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoInt(INT value, INT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUInt(UINT value, UINT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoR4(FLOAT value, FLOAT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoR8(DOUBLE value, DOUBLE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoCy(CY value, CY* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoDate(DATE value, DATE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoDecimal(DECIMAL value, DECIMAL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoBstr(BSTR value, BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoBool(VARIANT_BOOL value, VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoError(SCODE value, SCODE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoColor(LONG value, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoVariant(VARIANT value, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoDispatch(IDispatch* value, IDispatch** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoUnknown(IUnknown* value, IUnknown** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoArray(SAFEARRAY* value, SAFEARRAY** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE EchoRecord(VARIANT record, VARIANT* result) = 0;

    // Values by reference: each is changed as its comment says.
    virtual HRESULT STDMETHODCALLTYPE ChangeShort(SHORT* number) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeLong(LONG* number) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeDouble(DOUBLE* number) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeBool(VARIANT_BOOL* truth) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeCurrency(CY* amount) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeDate(DATE* day) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeText(BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeVariant(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeArray(SAFEARRAY** values) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeLongs(SAFEARRAY** numbers) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeDispatch(IDispatch** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangePoint(Point* point) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangePerson(Person* person) = 0;
    virtual HRESULT STDMETHODCALLTYPE ChangeRecord(VARIANT* record) = 0;

    // Values given out.
    virtual HRESULT STDMETHODCALLTYPE GiveLong(LONG* number) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveDouble(DOUBLE* number) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveBool(VARIANT_BOOL* truth) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveText(BSTR* text) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveVariant(VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveDispatch(IDispatch** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveUnknown(IUnknown** object) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveArray(SAFEARRAY** values) = 0;
    virtual HRESULT STDMETHODCALLTYPE GivePoint(Point* point) = 0;
    virtual HRESULT STDMETHODCALLTYPE GiveTwo(LONG* number, BSTR* text, VARIANT_BOOL* result) = 0;

    // Properties.
    virtual HRESULT STDMETHODCALLTYPE get_Value(VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Name(BSTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Count(LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Secret(BSTR text) = 0;
    virtual HRESULT STDMETHODCALLTYPE RevealSecret(BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Cell(LONG row, LONG column, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_Cell(LONG row, LONG column, VARIANT value) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Peer(IDispatch** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE putref_Peer(IDispatch* object) = 0;

    // Arguments and arrays.
    virtual HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE AddNumbers(SAFEARRAY* numbers, DOUBLE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Describe(LONG count, BSTR text, VARIANT extra,
                                               BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Join(SAFEARRAY* texts, BSTR separator, BSTR* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakeCube(LONG a, LONG b, LONG c, SAFEARRAY** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakeGrid(LONG rows, LONG columns, SAFEARRAY** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE SumArray(VARIANT numbers, DOUBLE* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakePoint(LONG x, LONG y, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakePerson(BSTR name, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE MakePoints(LONG count, VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE SumLoose(Loose* loose, LONG* result) = 0;

    // Failures.
    virtual HRESULT STDMETHODCALLTYPE Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                                           LONG helpContext) = 0;
    virtual HRESULT STDMETHODCALLTYPE FailPlain(LONG code) = 0;
    virtual HRESULT STDMETHODCALLTYPE FailByCode(LONG code) = 0;
    virtual HRESULT STDMETHODCALLTYPE Mismatch(VARIANT a, VARIANT b, VARIANT c, LONG position) = 0;

    // Objects and recorded calls.
    virtual HRESULT STDMETHODCALLTYPE CallBack(IDispatch* object, BSTR method, VARIANT argument,
                                               VARIANT* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Keep(IDispatch* object) = 0;
    virtual HRESULT STDMETHODCALLTYPE Kept(IDispatch** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE Same(IUnknown* first, IUnknown* second,
                                           VARIANT_BOOL* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE RecordedCalls(SAFEARRAY** result) = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearRecorded() = 0;
};

struct ISampleExtra : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Twice(LONG number, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ExtraName(BSTR* result) = 0;
};

}  // namespace velk::test::server
