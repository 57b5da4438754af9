/// The host object that the benchmarks call.
#pragma once

#include "host/host.h"

/// A script class with 30 members. "Add" takes two integers, "Echo" a text,
/// and "Last" stands last in the member table.
class SampleObject : public proxyObjectC {
  public:
    static proxyMemberDescListS const* getStaticProxyTypeInfo();
    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }

    /// A new one, bound to the calling thread.
    static mzComPtrT<mzIDispatch> create();

  private:
    int add(int left, int right) { return left + right; }
    mzComStringC echo(mzComStringC text) { return text; }
    int last() { return 30; }
    int other() { return 0; }
};
