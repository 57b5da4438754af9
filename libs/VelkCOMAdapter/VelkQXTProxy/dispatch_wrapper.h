/// The host object that stands for a native automation object.
#pragma once

#include <atomic>
#include <mutex>

#include "VelkQXTProxy/com_adapter_global.h"
#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/module_lock.h"
#include "host/com_base.h"

/// Calls a native `IDispatch` by name.
///
/// It holds no pointer but a cookie, so that any thread in any apartment may
/// call it. It may also be bound anew while other threads call it: each call
/// uses the object that was there when it began.
class vbsComDispatchWrapperC : public mzComDispatchBaseC, public mzIComDispatchWrapper {
  public:
    /// Null makes an empty wrapper, as does an object that cannot be registered.
    explicit vbsComDispatchWrapperC(IDispatch* dispatch);
    ~vbsComDispatchWrapperC() override;

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override { return mzComDispatchBaseC::addRef(); }
    unsigned release() override { return mzComDispatchBaseC::release(); }

    /// Host result 0 or 1. Most failures come with an exception of the source
    /// "Invoke DSP"; an empty wrapper, a default member that is read or written
    /// as a property, and values that cannot cross come with none. Throws what
    /// carries E_OUTOFMEMORY.
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override;

    unsigned getDispatch(IDispatch** out) override;
    unsigned setDispatch(IDispatch* dispatch, IID const* forcedIid) override;
    unsigned setDispatch(IDispatch* dispatch) override;

  private:
    IID forcedInterface() const;

    velk::com::ModuleLock moduleLock_;
    std::atomic<VelkObjectCookie> cookie_{};
    // Most wrappers never have one: only the others pay for the section.
    std::atomic<bool> hasForced_{false};
    mutable std::mutex forcedSection_;
    IID forcedIid_{};
};
