#pragma once

#include "host/proxy_object.h"

namespace velk::core {

/// The script object "qxttools.scriptmanager": what scripts ask the runtime
/// itself for. It keeps nothing, and any thread may call it.
class ScriptManager : public proxyObjectC {
  public:
    ScriptManager();

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    /// A new object that stands for a class and has its constants as
    /// properties. A type name is "proxyobj." and the class in lower case; fails
    /// for one without constants, here and below.
    mzComPtrT<mzIUnknown> createNullType(mzComStringC const& typeName);
    /// Whether `createNullType` knows the type name.
    bool hasType(mzComStringC const& typeName);
    /// A "qxttools.array" of the type names that have constants.
    mzComPtrT<mzIUnknown> types();
    /// A "qxttools.array" of the names of a class's constants.
    mzComPtrT<mzIUnknown> constantNames(mzComStringC const& typeName);
    /// The value of one constant; fails for a name that the class does not have.
    mzComVariantC constant(mzComStringC const& typeName, mzComStringC const& name);

    /// A new object of the class that scripts know by this name; fails when there
    /// is none.
    mzComPtrT<mzIUnknown> createObject(mzComStringC const& progId);
    /// The running object that is registered under this name; fails without one.
    mzComPtrT<mzIUnknown> getObject(mzComStringC const& progId);
    /// Whether a script class of this name is registered and can be made.
    bool hasClass(mzComStringC const& name);
    /// Waits for milliseconds, and serves calls of this thread's objects
    /// meanwhile. Fails for a negative number.
    void sleep(int milliseconds);
};

}  // namespace velk::core
