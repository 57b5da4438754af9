/// The object that is wrong on purpose.
#pragma once

#include <atomic>
#include <span>

#include "com/class_factory.h"
#include "servers/automation/call_record.h"
#include "servers/automation/live_object.h"
#include "servers/automation/test_server_ids.h"

namespace velk::test::server {

class Faulty;

/// One call as it reached Invoke. Pointers that the caller left out are null.
struct FaultyCall {
    DISPPARAMS const& parameters;
    VARIANT* result;
    EXCEPINFO* exception;
    UINT* argumentError;

    /// The argument at `index` from the first, or null.
    VARIANT* argument(UINT index) const {
        bool const given = index < parameters.cArgs;
        return given ? &parameters.rgvarg[parameters.cArgs - 1 - index] : nullptr;
    }
};

/// One named fault. `run` answers for Invoke; it may throw, which is then the fault.
struct FaultyMethod {
    char const* name;
    HRESULT (*run)(Faulty& object, FaultyCall const& call);
};

/// All of them; the table in faulty_methods.cpp tells what each does.
std::span<FaultyMethod const> faultyMethods();

/// An IDispatch without type information; faultyMethods has its methods.
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
