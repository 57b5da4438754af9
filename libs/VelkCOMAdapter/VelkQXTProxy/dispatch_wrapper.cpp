#include "VelkQXTProxy/dispatch_wrapper.h"

#include "VelkQXTProxy/call_by_name.h"
#include "VelkQXTProxy/call_failure.h"
#include "host/coinit.h"
#include "port/stack_room.h"

using velk::com::ComPtr;

vbsComDispatchWrapperC::vbsComDispatchWrapperC(IDispatch* dispatch) {
    vbsComDispatchWrapperC::setDispatch(dispatch);
}

vbsComDispatchWrapperC::~vbsComDispatchWrapperC() {
    vbsComDispatchWrapperC::setDispatch(nullptr);
}

unsigned vbsComDispatchWrapperC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    out = mzComPtrC();
    if (iid.equal(mzIComDispatchWrapper::interfaceId())) {
        out.attach(static_cast<mzIComDispatchWrapper*>(this));
        return mzSuccess;
    }
    return mzComDispatchBaseC::queryInterface(iid, out) == mzSuccess ? mzSuccess : mzFailure;
}

unsigned vbsComDispatchWrapperC::getDispatch(IDispatch** out) {
    *out = nullptr;
    PCoInitializer::attach(0);
    VelkObjectCookie const cookie = cookie_;
    if (cookie.cookie == 0) return mzFailure;
    return VelkComAdapterGlobal::getInterface(cookie, out) == S_OK ? mzSuccess : mzFailure;
}

unsigned vbsComDispatchWrapperC::setDispatch(IDispatch* dispatch) {
    PCoInitializer::attach(0);
    VelkObjectCookie const former = cookie_.exchange({});
    if (former.cookie != 0) VelkComAdapterGlobal::revokeInterface(former);
    if (!dispatch) return mzSuccess;
    VelkObjectCookie made;
    VelkComAdapterGlobal::registerInterface(dispatch, made);
    // Another thread may have bound it meanwhile: the later one stays.
    VelkObjectCookie const overtaken = cookie_.exchange(made);
    if (overtaken.cookie != 0) VelkComAdapterGlobal::revokeInterface(overtaken);
    return mzSuccess;
}

unsigned vbsComDispatchWrapperC::setDispatch(IDispatch* dispatch, IID const* forcedIid) {
    vbsComDispatchWrapperC::setDispatch(dispatch);
    if (forcedIid) {
        std::lock_guard const guard(forcedSection_);
        forcedIid_ = *forcedIid;
        hasForced_ = true;
    }
    return mzSuccess;
}

IID vbsComDispatchWrapperC::forcedInterface() const {
    if (!hasForced_) return {};
    std::lock_guard const guard(forcedSection_);
    return forcedIid_;
}

unsigned vbsComDispatchWrapperC::invokeByName(mzComStringC const& name, unsigned callKind,
                                              mzComVariantArrayC const& args, mzComVariantC& result,
                                              mzComPtrT<mzIException>& exception) {
    ComPtr<IDispatch> object;
    if (getDispatch(object.put()) != mzSuccess || !object) return mzFailure;
    if (!velk::adapter::stackHasRoom()) {
        return velk::adapter::raise(velk::adapter::nestedTooDeeply, exception);
    }
    return velk::adapter::callByName({object, forcedInterface(), name, callKind}, args, result,
                                     exception);
}
