#include "host/creation.h"

#include "host/proxy_factory.h"

#include "event_list.h"
#include "registries.h"

namespace {

// Every function of this file answers a failure, whatever stands behind it threw.
template <typename Body>
unsigned guarded(Body body) noexcept {
    try {
        return body();
    } catch (...) {
        return mzFailure;
    }
}

unsigned createFromFactories(mzIIDS const& id, mzIUnknown* outer, mzComPtrT<mzIUnknown>& out) {
    for (auto const& factory : velk::core::currentFactories()) {
        if (factory->createInstance(outer, id, out) == mzSuccess && out.isValid()) {
            return mzSuccess;
        }
        out.detach();
    }
    return mzFailure;
}

unsigned createAny(char const* progId, mzComPtrT<mzIUnknown>& out) {
    if (proxyFactoryC::instance().createObject(progId, out) == mzSuccess) {
        return mzSuccess;
    }
    return createFromFactories(mzIIDS(progId), nullptr, out);
}

unsigned query(mzIUnknown* object, mzIIDS const& iid, mzComPtrC& out) {
    if (object == nullptr || object->queryInterface(iid, out) != mzSuccess || !out.isValid()) {
        out.detach();
        return mzFailure;
    }
    return mzSuccess;
}

}  // namespace

unsigned mzComCreateObject(char const* progId, mzIIDS const& iid, mzComPtrC& out) {
    out.detach();
    if (progId == nullptr || *progId == 0) {
        return mzFailure;
    }
    return guarded([&] {
        mzServerEventListC::instance().startOnDemand();
        mzComPtrT<mzIUnknown> object;
        unsigned const code = createAny(progId, object);
        return code == mzSuccess ? query(object.iface(), iid, out) : code;
    });
}

unsigned mzComCreateInstance(char const* id, mzIUnknown* outer, mzComPtrT<mzIUnknown>& out) {
    out.detach();
    if (id == nullptr || *id == 0) {
        return mzFailure;
    }
    return guarded([&] {
        mzServerEventListC::instance().startOnDemand();
        return createFromFactories(mzIIDS(id), outer, out);
    });
}

unsigned mzComGetActiveObject(char const* progId, mzIIDS const& iid, int, mzComPtrC& out, int) {
    out.detach();
    if (progId == nullptr || *progId == 0) {
        return mzFailure;
    }
    return guarded([&] { return query(velk::core::findActiveObject(progId).iface(), iid, out); });
}
