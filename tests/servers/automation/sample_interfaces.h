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

// clang-format off
/// The members in the order of the description: the interface declares them, and
/// the object again.
#define VELK_SAMPLE_MEMBERS(MEMBER) \
    /* Values by value: each gives back what it got. */ \
    MEMBER(EchoI1, (CHAR value, CHAR* result)) \
    MEMBER(EchoI2, (SHORT value, SHORT* result)) \
    MEMBER(EchoI4, (LONG value, LONG* result)) \
    MEMBER(EchoI8, (LONGLONG value, LONGLONG* result)) \
    MEMBER(EchoUI1, (BYTE value, BYTE* result)) \
    MEMBER(EchoUI2, (USHORT value, USHORT* result)) \
    MEMBER(EchoUI4, (ULONG value, ULONG* result)) \
    MEMBER(EchoUI8, (ULONGLONG value, ULONGLONG* result)) \
    MEMBER(EchoInt, (INT value, INT* result)) \
    MEMBER(EchoUInt, (UINT value, UINT* result)) \
    MEMBER(EchoR4, (FLOAT value, FLOAT* result)) \
    MEMBER(EchoR8, (DOUBLE value, DOUBLE* result)) \
    MEMBER(EchoCy, (CY value, CY* result)) \
    MEMBER(EchoDate, (DATE value, DATE* result)) \
    MEMBER(EchoDecimal, (DECIMAL value, DECIMAL* result)) \
    MEMBER(EchoBstr, (BSTR value, BSTR* result)) \
    MEMBER(EchoBool, (VARIANT_BOOL value, VARIANT_BOOL* result)) \
    MEMBER(EchoError, (SCODE value, SCODE* result)) \
    MEMBER(EchoColor, (LONG value, LONG* result)) \
    MEMBER(EchoVariant, (VARIANT value, VARIANT* result)) \
    MEMBER(EchoDispatch, (IDispatch* value, IDispatch** result)) \
    MEMBER(EchoUnknown, (IUnknown* value, IUnknown** result)) \
    MEMBER(EchoArray, (SAFEARRAY* value, SAFEARRAY** result)) \
    MEMBER(EchoRecord, (VARIANT record, VARIANT* result)) \
    /* Values by reference: each is changed as its comment says. */ \
    MEMBER(ChangeShort, (SHORT* number)) \
    MEMBER(ChangeLong, (LONG* number)) \
    MEMBER(ChangeDouble, (DOUBLE* number)) \
    MEMBER(ChangeBool, (VARIANT_BOOL* truth)) \
    MEMBER(ChangeCurrency, (CY* amount)) \
    MEMBER(ChangeDate, (DATE* day)) \
    MEMBER(ChangeText, (BSTR* text)) \
    MEMBER(ChangeVariant, (VARIANT* value)) \
    MEMBER(ChangeArray, (SAFEARRAY** values)) \
    MEMBER(ChangeLongs, (SAFEARRAY** numbers)) \
    MEMBER(ChangeDispatch, (IDispatch** object)) \
    MEMBER(ChangePoint, (Point* point)) \
    MEMBER(ChangePerson, (Person* person)) \
    MEMBER(ChangeRecord, (VARIANT* record)) \
    /* Values given out. */ \
    MEMBER(GiveLong, (LONG* number)) \
    MEMBER(GiveDouble, (DOUBLE* number)) \
    MEMBER(GiveBool, (VARIANT_BOOL* truth)) \
    MEMBER(GiveText, (BSTR* text)) \
    MEMBER(GiveVariant, (VARIANT* value)) \
    MEMBER(GiveDispatch, (IDispatch** object)) \
    MEMBER(GiveUnknown, (IUnknown** object)) \
    MEMBER(GiveArray, (SAFEARRAY** values)) \
    MEMBER(GivePoint, (Point* point)) \
    MEMBER(GiveTwo, (LONG* number, BSTR* text, VARIANT_BOOL* result)) \
    /* Properties. */ \
    MEMBER(get_Value, (VARIANT* result)) \
    MEMBER(put_Value, (VARIANT value)) \
    MEMBER(get_Name, (BSTR* result)) \
    MEMBER(put_Name, (BSTR text)) \
    MEMBER(get_Count, (LONG* result)) \
    MEMBER(put_Secret, (BSTR text)) \
    MEMBER(RevealSecret, (BSTR* result)) \
    MEMBER(get_Item, (VARIANT key, VARIANT* result)) \
    MEMBER(put_Item, (VARIANT key, VARIANT value)) \
    MEMBER(get_Cell, (LONG row, LONG column, VARIANT* result)) \
    MEMBER(put_Cell, (LONG row, LONG column, VARIANT value)) \
    MEMBER(get_Peer, (IDispatch** result)) \
    MEMBER(putref_Peer, (IDispatch* object)) \
    /* Arguments and arrays. */ \
    MEMBER(Add, (LONG left, LONG right, LONG* result)) \
    MEMBER(AddNumbers, (SAFEARRAY* numbers, DOUBLE* result)) \
    MEMBER(Describe, (LONG count, BSTR text, VARIANT extra, BSTR* result)) \
    MEMBER(Join, (SAFEARRAY* texts, BSTR separator, BSTR* result)) \
    MEMBER(MakeCube, (LONG a, LONG b, LONG c, SAFEARRAY** result)) \
    MEMBER(MakeGrid, (LONG rows, LONG columns, SAFEARRAY** result)) \
    MEMBER(SumArray, (VARIANT numbers, DOUBLE* result)) \
    MEMBER(MakePoint, (LONG x, LONG y, VARIANT* result)) \
    MEMBER(MakePerson, (BSTR name, VARIANT* result)) \
    MEMBER(MakePoints, (LONG count, VARIANT* result)) \
    MEMBER(SumLoose, (Loose* loose, LONG* result)) \
    /* Failures. */ \
    MEMBER(Fail, (LONG code, BSTR source, BSTR description, BSTR helpFile, LONG helpContext)) \
    MEMBER(FailPlain, (LONG code)) \
    MEMBER(FailByCode, (LONG code)) \
    MEMBER(Mismatch, (VARIANT a, VARIANT b, VARIANT c, LONG position)) \
    /* Objects and recorded calls. */ \
    MEMBER(CallBack, (IDispatch* object, BSTR method, VARIANT argument, VARIANT* result)) \
    MEMBER(Keep, (IDispatch* object)) \
    MEMBER(Kept, (IDispatch** result)) \
    MEMBER(Same, (IUnknown* first, IUnknown* second, VARIANT_BOOL* result)) \
    MEMBER(RecordedCalls, (SAFEARRAY** result)) \
    MEMBER(ClearRecorded, ())
// clang-format on

struct ISample : IDispatch {
#define VELK_PURE_MEMBER(name, parameters) virtual HRESULT STDMETHODCALLTYPE name parameters = 0;
    VELK_SAMPLE_MEMBERS(VELK_PURE_MEMBER)
#undef VELK_PURE_MEMBER
};

struct ISampleExtra : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Twice(LONG number, LONG* result) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ExtraName(BSTR* result) = 0;
};

}  // namespace velk::test::server
