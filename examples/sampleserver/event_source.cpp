#include "event_source.h"

#include "sample_library.h"

namespace sampleserver {

using namespace velk;

void EventSource::setOwner(IConnectionPointContainer* owner) noexcept {
    std::lock_guard const guard(mutex_);
    owner_ = owner;
}

void EventSource::raise(DISPID member, std::vector<VARIANT>& arguments) {
    // A sink may advise and unadvise while it is called.
    std::unique_lock guard(mutex_);
    auto const sinks = sinks_;
    guard.unlock();
    for (auto const& [cookie, sink] : sinks) {
        DISPPARAMS parameters{arguments.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
        com::Variant result;
        com::ExceptionInfo exception;
        sink->Invoke(member, GUID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &parameters,
                     result.put(), exception.put(), nullptr);
    }
}

HRESULT EventSource::GetConnectionInterface(IID* id) noexcept {
    if (!id) return E_POINTER;
    *id = sampleEvents;
    return S_OK;
}

HRESULT EventSource::GetConnectionPointContainer(IConnectionPointContainer** container) noexcept {
    if (!container) return E_POINTER;
    std::lock_guard const guard(mutex_);
    *container = com::ComPtr<IConnectionPointContainer>(owner_).copy();
    return owner_ ? S_OK : E_UNEXPECTED;
}

HRESULT EventSource::Advise(IUnknown* sink, DWORD* cookie) noexcept {
    if (!sink || !cookie) return E_POINTER;
    *cookie = 0;
    try {
        com::ComPtr<IUnknown> const given(sink);
        auto events = given.query<IDispatch>(sampleEvents);
        if (!events) events = given.query<IDispatch>(IID_IDispatch);
        constexpr HRESULT cannotConnect = static_cast<HRESULT>(0x80040202U);
        if (!events) return cannotConnect;
        std::lock_guard const guard(mutex_);
        sinks_.emplace(lastCookie_ + 1, std::move(events));
        *cookie = ++lastCookie_;
        return S_OK;
    }
    VELK_COM_CATCH
}

HRESULT EventSource::Unadvise(DWORD cookie) noexcept {
    // The sink goes after the lock.
    std::unique_lock guard(mutex_);
    auto const gone = sinks_.extract(cookie);
    guard.unlock();
    constexpr HRESULT noConnection = static_cast<HRESULT>(0x80040200U);
    return gone.empty() ? noConnection : S_OK;
}

HRESULT EventSource::EnumConnections(IEnumConnections** out) noexcept {
    if (!out) return E_POINTER;
    *out = nullptr;
    return E_NOTIMPL;
}

}  // namespace sampleserver
