/// The object of the sample server.
#pragma once

#include <map>
#include <mutex>

#include "com/dispatch_impl.h"
#include "event_source.h"
#include "key_list.h"
#include "sample_library.h"

namespace sampleserver {

/// SampleLib.idl says what the members do. Thread-safe; foreign objects are
/// called and released with no lock held.
class Sample : public velk::com::CComObjectRootEx<velk::com::CComMultiThreadModel>,
               public velk::com::IDispatchImpl<ISample, &sampleInterface, &sampleLibrary, 1, 0>,
               public IProvideClassInfo,
               public IConnectionPointContainer {
  public:
    VELK_COM_MAP(Sample, VELK_COM_INTERFACE(ISample, sampleInterface),
                 VELK_COM_INTERFACE(ISample, IID_IDispatch),
                 VELK_COM_INTERFACE(IProvideClassInfo, IID_IProvideClassInfo),
                 VELK_COM_INTERFACE(IConnectionPointContainer, IID_IConnectionPointContainer))

    HRESULT finalConstruct() noexcept;
    void finalRelease() noexcept;

    HRESULT STDMETHODCALLTYPE get_Item(VARIANT key, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE put_Item(VARIANT key, VARIANT value) noexcept override;
    HRESULT STDMETHODCALLTYPE get_Count(LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE get__NewEnum(IUnknown** result) noexcept override;
    HRESULT STDMETHODCALLTYPE Add(LONG left, LONG right, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakePoint(LONG x, LONG y, VARIANT* result) noexcept override;
    HRESULT STDMETHODCALLTYPE MakeCube(LONG a, LONG b, LONG c,
                                       SAFEARRAY** result) noexcept override;
    HRESULT STDMETHODCALLTYPE SumArray(VARIANT numbers, DOUBLE* result) noexcept override;
    HRESULT STDMETHODCALLTYPE GiveVariant(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangeVariant(VARIANT* value) noexcept override;
    HRESULT STDMETHODCALLTYPE ChangePoint(Point* point) noexcept override;
    HRESULT STDMETHODCALLTYPE Fail(LONG code, BSTR source, BSTR description, BSTR helpFile,
                                   LONG helpContext) noexcept override;

    /// Hands out what `Fail` left for the caller of this call.
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID lcid, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) noexcept override;

    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** out) noexcept override;
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID id,
                                                  IConnectionPoint** out) noexcept override;

  protected:
    Sample() = default;
    ~Sample() = default;

  private:
    /// Whether the sinks let the item become `value`.
    bool mayChange(Text const& key, VARIANT const& value);

    std::mutex mutex_;
    std::map<Text, velk::com::Variant> items_;
    velk::com::ComPtr<EventSource> events_;
};

}  // namespace sampleserver
