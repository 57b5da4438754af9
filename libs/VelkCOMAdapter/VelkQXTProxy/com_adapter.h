/// The script object that host scripts reach native objects with.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include "VelkQXTProxy/exception_info.h"
#include "com/module_lock.h"
#include "host/auto_register.h"
#include "host/proxy_object.h"

/// "qxttools.comadapter". Creates native objects, attaches to running ones and
/// looks up constants of type libraries. Every native object that it returns is
/// wrapped; the wrappers do not depend on it.
///
/// Without state, for any thread; but while it lives, the thread that made it
/// has an exception object. Members that fail raise the execute exception with
/// the member's name, except `GetEnumConstant`, which answers empty.
class qxtProxyC : public proxyObjectC {
  public:
    qxtProxyC();
    ~qxtProxyC() override;

    /// A new object of a registered class.
    mzComPtrT<mzIDispatch> CreateObject(mzComStringC progId);
    /// A new object of a registered class, created for the interface `iid` (in
    /// registry form) and called through the description of that interface in
    /// the type library file `typeLibPath`.
    mzComPtrT<mzIDispatch> CreateObject(mzComStringC const& progId, mzComStringC const& iid,
                                        mzComStringC const& typeLibPath);
    /// The active object of a registered class.
    mzComPtrT<mzIDispatch> GetObject(mzComStringC progId);
    /// A new wrapper over the dispatch side of another interface of a wrapped
    /// object.
    mzComPtrT<mzIDispatch> QueryInterface(mzComStringC const& iid, mzComPtrT<mzIDispatch> object);
    /// What the thread's last failed native call told, and forgets it; empty
    /// where nothing was ever stored.
    static mzComPtrT<prx_EXCEPINFO> getLastExceptionInfo();
    /// A constant of an enumeration as an integer, from a type library file or
    /// from the library that describes a wrapped object; empty when it is not
    /// found, or negative.
    mzComVariantC GetEnumConstant(mzComStringC const& typeLibPath, mzComStringC const& enumName,
                                  mzComStringC const& constName);
    mzComVariantC GetEnumConstant(mzComPtrT<mzIDispatch> const& object,
                                  mzComStringC const& enumName, mzComStringC const& constName);

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

  private:
    velk::com::ModuleLock moduleLock_;
};
