/// The object that is right in everything.
#pragma once

#include <map>
#include <mutex>
#include <utility>

#include <ocidl.h>

#include "com/class_factory.h"
#include "servers/automation/live_object.h"
#include "servers/automation/sample_dispatch.h"

namespace velk::test::server {

/// Members are described in VelkTestLib.idl. Thread-safe; foreign objects are
/// called and released with no lock held.
class Sample : public com::CComObjectRootEx<com::CComMultiThreadModel>,
               public SampleDispatch,
               public com::IDispatchImpl<ISampleExtra, &sampleExtraInterface, &testLibrary, 1, 0>,
               public IProvideClassInfo,
               private LiveObject {
  public:
    VELK_COM_MAP(Sample, VELK_COM_INTERFACE(ISample, sampleInterface),
                 VELK_COM_INTERFACE(ISample, IID_IDispatch),
                 VELK_COM_INTERFACE(ISampleExtra, sampleExtraInterface),
                 VELK_COM_INTERFACE(IProvideClassInfo, IID_IProvideClassInfo))

    // Values by value: each gives back what it got.
    HRESULT STDMETHODCALLTYPE EchoI1(CHAR value, CHAR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoI2(SHORT value, SHORT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoI4(LONG value, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoI8(LONGLONG value, LONGLONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUI1(BYTE value, BYTE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUI2(USHORT value, USHORT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUI4(ULONG value, ULONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUI8(ULONGLONG value, ULONGLONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoInt(INT value, INT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUInt(UINT value, UINT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoR4(FLOAT value, FLOAT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoR8(DOUBLE value, DOUBLE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoCy(CY value, CY* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoDate(DATE value, DATE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoDecimal(DECIMAL value, DECIMAL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoBstr(BSTR value, BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoBool(VARIANT_BOOL value, VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoError(SCODE value, SCODE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoColor(LONG value, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoVariant(VARIANT value, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoDispatch(IDispatch* value, IDispatch** result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoUnknown(IUnknown* value, IUnknown** result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoArray(SAFEARRAY* value, SAFEARRAY** result) noexcept override;
    HRESULT STDMETHODCALLTYPE EchoRecord(VARIANT record, VARIANT* result) noexcept override;

    // Values by reference: each is changed as its comment says.
    HRESULT STDMETHODCALLTYPE ChangeShort(SHORT* number) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeLong(LONG* number) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeDouble(DOUBLE* number) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeBool(VARIANT_BOOL* truth) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeCurrency(CY* amount) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeDate(DATE* day) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeText(BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeVariant(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeArray(SAFEARRAY** values) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeLongs(SAFEARRAY** numbers) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeDispatch(IDispatch** object) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangePoint(Point* point) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangePerson(Person* person) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeRecord(VARIANT* record) noexcept override;

    // Values given out.
    HRESULT STDMETHODCALLTYPE GiveLong(LONG* number) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveDouble(DOUBLE* number) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveBool(VARIANT_BOOL* truth) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveText(BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveVariant(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveDispatch(IDispatch** object) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveUnknown(IUnknown** object) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveArray(SAFEARRAY** values) noexcept override;
    HRESULT STDMETHODCALLTYPE GivePoint(Point* point) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveTwo(LONG* number, BSTR* text,
                                      VARIANT_BOOL* result) noexcept override;

    // Properties.
    HRESULT STDMETHODCALLTYPE get_Value(VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Name(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Count(LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Secret(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE RevealSecret(BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Cell(LONG row, LONG column, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Cell(LONG row, LONG column, VARIANT value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Peer(IDispatch** result) noexcept override;
    HRESULT STDMETHODCALLTYPE putref_Peer(IDispatch* object) noexcept override;

    // Arguments and arrays.
    HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE AddNumbers(SAFEARRAY* numbers, DOUBLE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Describe(LONG count, BSTR text, VARIANT extra,
                                       BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Join(SAFEARRAY* texts, BSTR separator,
                                   BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakeCube(LONG a, LONG b, LONG c,
                                       SAFEARRAY** result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakeGrid(LONG rows, LONG columns,
                                       SAFEARRAY** result) noexcept override;
    HRESULT STDMETHODCALLTYPE SumArray(VARIANT numbers, DOUBLE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakePoint(LONG x, LONG y, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakePerson(BSTR name, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakePoints(LONG count, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE SumLoose(Loose* loose, LONG* result) noexcept override;

    // Failures.
    HRESULT STDMETHODCALLTYPE Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                                   LONG helpContext) noexcept override;
    HRESULT STDMETHODCALLTYPE FailPlain(LONG code) noexcept override;
    HRESULT STDMETHODCALLTYPE FailByCode(LONG code) noexcept override;
    HRESULT STDMETHODCALLTYPE Mismatch(VARIANT a, VARIANT b, VARIANT c,
                                       LONG position) noexcept override;

    // Objects and recorded calls.
    HRESULT STDMETHODCALLTYPE CallBack(IDispatch* object, BSTR method, VARIANT argument,
                                       VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE Keep(IDispatch* object) noexcept override;
    HRESULT STDMETHODCALLTYPE Kept(IDispatch** result) noexcept override;
    HRESULT STDMETHODCALLTYPE Same(IUnknown* first, IUnknown* second,
                                   VARIANT_BOOL* result) noexcept override;
    HRESULT STDMETHODCALLTYPE RecordedCalls(SAFEARRAY** result) noexcept override;
    HRESULT STDMETHODCALLTYPE ClearRecorded() noexcept override;

    HRESULT STDMETHODCALLTYPE Twice(LONG number, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE get_ExtraName(BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** type) noexcept override;

  protected:
    Sample() = default;
    ~Sample() = default;

  private:
    ISample* self() noexcept { return this; }

    std::mutex mutex_;
    com::Variant value_;
    Text name_;
    Text secret_;
    std::map<Text, com::Variant> items_;
    std::map<std::pair<LONG, LONG>, com::Variant> cells_;
    com::ComPtr<IDispatch> peer_;
    com::ComPtr<IDispatch> kept_;
};

}  // namespace velk::test::server
