/// How the sample tells its clients what happens.
#pragma once

#include <map>
#include <mutex>
#include <vector>

#include <ocidl.h>

#include "com/class_factory.h"
#include "com/owners.h"

namespace sampleserver {

/// The sinks of one object. Clients hold the connection point, which outlives
/// its object and is empty then. Thread-safe; sinks are called with no lock held.
class EventSource : public velk::com::CComObjectRootEx<velk::com::CComMultiThreadModel>,
                    public IConnectionPoint {
  public:
    VELK_COM_MAP(EventSource, VELK_COM_INTERFACE(IConnectionPoint, IID_IConnectionPoint))

    /// Whose events these are; null once that has gone. Holds no reference:
    /// the object says when it goes.
    void setOwner(IConnectionPointContainer* owner) noexcept;

    /// Calls `member` of every sink with `arguments`, last one first. A sink
    /// that fails is passed over.
    void raise(DISPID member, std::vector<VARIANT>& arguments);

    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* id) noexcept override;
    HRESULT STDMETHODCALLTYPE
    GetConnectionPointContainer(IConnectionPointContainer** container) noexcept override;
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) noexcept override;
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** out) noexcept override;

  protected:
    EventSource() = default;
    ~EventSource() = default;

  private:
    std::mutex mutex_;
    IConnectionPointContainer* owner_ = nullptr;
    std::map<DWORD, velk::com::ComPtr<IDispatch>> sinks_;
    DWORD lastCookie_ = 0;
};

}  // namespace sampleserver
