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

#define VELK_OWN_MEMBER(name, parameters) \
    HRESULT STDMETHODCALLTYPE name parameters noexcept override;
    VELK_SAMPLE_MEMBERS(VELK_OWN_MEMBER)
#undef VELK_OWN_MEMBER

    HRESULT STDMETHODCALLTYPE Twice(LONG number, LONG* result) noexcept override;
    HRESULT STDMETHODCALLTYPE get_ExtraName(BSTR* result) noexcept override;
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** type) noexcept override;

  protected:
    Sample() = default;
    ~Sample() = default;

  private:
    ISample* self() noexcept {
        return this;
    }

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
