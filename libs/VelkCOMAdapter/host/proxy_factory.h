#pragma once

#include "host/com_ptr.h"
#include "host/export.h"
#include "host/member_desc.h"

/// The runtime's single registry of script classes. Any thread. It exists from
/// first use to the end of the process and is never destroyed, so that modules
/// may reach it while they are torn down.
class VELKCORE_API proxyFactoryC {
  public:
    static proxyFactoryC& instance();

    /// Makes the class known under its `className` and, when it has one, its
    /// `scriptName`; a later record takes a name over. A null record is ignored.
    void registerClass(proxyMemberDescListS const* record);
    /// Forgets the record, which may go away afterwards.
    void revokeClass(proxyMemberDescListS const* record);
    /// The record registered under a class or script name (ASCII case does not
    /// matter), or null.
    proxyMemberDescListS const* find(char const* name) const;
    /// A new object of the class registered under `name`. `mzFailure`, and
    /// `out` empty, when there is none or scripts cannot make it.
    unsigned createObject(char const* name, mzComPtrT<mzIUnknown>& out) const;

  private:
    proxyFactoryC() = default;
    ~proxyFactoryC() = default;
};
