#include "module/host_class_module.h"

#include <new>

#include "VelkQXTProxy/com_adapter.h"
#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/variant_wrapper.h"
#include "host/agg_object.h"

namespace {

/// For classes that cannot be part of an aggregate.
template <class Object>
unsigned createAlone(mzComDefaultClassFactory*, mzIUnknown* outer, mzComPtrT<mzIUnknown>& result) {
    if (outer) return mzFailure;
    result = (new Object)->getIUnknown();
    return mzSuccess;
}

unsigned createDispatchWrapper(mzComDefaultClassFactory*, mzIUnknown* outer,
                               mzComPtrT<mzIUnknown>& result) {
    using Aggregate = mzComAggObject<vbsComDispatchWrapperC>;
    if (outer) {
        result = static_cast<mzIUnknown*>(new Aggregate(outer, nullptr));
    } else {
        result = (new vbsComDispatchWrapperC(nullptr))->getIUnknown();
    }
    return mzSuccess;
}

}  // namespace

mzComPtrT<mzIClassFactory> qxtClassFactory::make() {
    auto* const factory = new (std::nothrow) qxtClassFactory;
    mzComPtrT<mzIClassFactory> result(factory);
    if (factory) {
        factory->addCreator(mzIIDS("qxttools.comadapter"), &createAlone<qxtProxyC>);
        factory->addCreator(mzIIDS("comadapter.dspwrapper"), &createDispatchWrapper);
        factory->addCreator(mzIIDS("comadapter.variantwrapper"),
                            &createAlone<vbsComVariantWrapperC>);
    }
    return result;
}

void VelkCOMAdapter::registerFactories() {
    addFactory(&qxtClassFactory::make);
}
