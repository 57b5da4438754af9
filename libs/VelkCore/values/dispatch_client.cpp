#include "host/dispatch_client.h"

#include "host/exception.h"

namespace {

unsigned invoke(mzComPtrT<mzIDispatch> const& object, mzComStringC const& name, unsigned callKind,
                mzComVariantArrayC const& args, mzComVariantC& result) {
    if (!object.isValid()) return mzFailure;
    // The callee may put this client's owner away; the object stays until then.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    mzComPtrT<mzIDispatch> const held = object;
    mzComPtrT<mzIException> dropped;
    return held->invokeByName(name, callKind, args, result, dropped);
}

}  // namespace

unsigned mzIDispatchC::invokeByName(char const* name, unsigned callKind,
                                    mzComVariantArrayC const& args, mzComVariantC& result) const {
    return invoke(dispatch_, mzComStringC(name), callKind, args, result);
}

unsigned mzIDispatchC::getProperty(mzComStringC const& name, mzComVariantC& result) const {
    return invoke(dispatch_, name, mzCallPropertyGet, {}, result);
}

mzComVariantC mzIDispatchC::_invoke(mzComStringC const& name,
                                    mzComVariantArrayC const& args) const {
    mzComVariantC result;
    if (invoke(dispatch_, name, mzCallMethod, args, result) != mzSuccess) result.clear();
    return result;
}
