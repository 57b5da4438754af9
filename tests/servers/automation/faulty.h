/// The object that is wrong on purpose.
#pragma once

#include <atomic>

#include "com/class_factory.h"
#include "servers/automation/call_record.h"
#include "servers/automation/faulty_method.h"
#include "servers/automation/live_object.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test::server {

/// An IDispatch without type information; faulty_method.h tells its methods.
/// Three more names are wrong by themselves:
/// - WrongDispId: has a DISPID, which Invoke answers with DISP_E_MEMBERNOTFOUND
/// - NamesFail: GetIDsOfNames answers E_OUTOFMEMORY
/// - NamesUnknown: GetIDsOfNames answers S_OK and DISPID_UNKNOWN
class Faulty : public com::CComObjectRootEx<com::CComMultiThreadModel>,
               public IDispatch,
               private LiveObject {
  public:
    VELK_COM_MAP(Faulty, VELK_COM_INTERFACE(IDispatch, IID_IDispatch))

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid,
                                          ITypeInfo** type) noexcept override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID lcid,
                                            DISPID* ids) noexcept override;
    /// Lets exceptions out where the method is meant to.
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID lcid, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* argumentError) override;

    /// From now on every call answers RPC_E_DISCONNECTED.
    void vanish() noexcept { vanished_ = true; }
    CallRecord& record() noexcept { return record_; }

  protected:
    Faulty() = default;
    ~Faulty() = default;

  private:
    std::atomic<bool> vanished_{false};
    CallRecord record_;
};

}  // namespace velk::test::server
