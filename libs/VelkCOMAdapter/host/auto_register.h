#pragma once

#include "host/proxy_factory.h"
#include "host/server_state_event.h"

/// Registers the script class `C` when the servers start: one static object per
/// class in the module that holds it. The class is forgotten with the object.
template <class C>
class proxyAutoRegisterT : public mzComServerStateEventC {
  public:
    proxyAutoRegisterT() : mzComServerStateEventC(80) { init(); }
    ~proxyAutoRegisterT() override {
        proxyFactoryC::instance().revokeClass(C::getStaticProxyTypeInfo());
    }

    unsigned serverInit() override {
        proxyFactoryC::instance().registerClass(C::getStaticProxyTypeInfo());
        return mzSuccess;
    }
    unsigned serverDone() override {
        proxyFactoryC::instance().revokeClass(C::getStaticProxyTypeInfo());
        return mzSuccess;
    }
};
