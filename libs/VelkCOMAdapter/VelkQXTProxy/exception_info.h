/// What a host script learns of a failed native call.
#pragma once

#include <optional>

#include "com/error.h"
#include "com/module_lock.h"
#include "com/owners.h"
#include "host/auto_register.h"
#include "host/proxy_object.h"

/// A copy of a native EXCEPINFO as a host object. Never changes, so that any
/// thread may read it. Scripts cannot create it.
class prx_EXCEPINFO : public proxyObjectC {
  public:
    /// Empty texts, everything else 0. Throws what carries E_OUTOFMEMORY.
    prx_EXCEPINFO();
    /// Copies texts up to their first NUL, a null text as null.
    explicit prx_EXCEPINFO(EXCEPINFO const& source);

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    int wCode() const { return code_; }
    int wReserved() const { return reserved_; }
    mzComStringC bstrSource() const { return mzComStringC::fromBSTR(source_.get()); }
    mzComStringC bstrDescription() const { return mzComStringC::fromBSTR(description_.get()); }
    mzComStringC bstrHelpFile() const { return mzComStringC::fromBSTR(helpFile_.get()); }
    /// Read as unsigned by the script.
    QVariant dwHelpContext() const;
    /// Read as signed by the script.
    QVariant scode() const;

    /// Keeps the module loaded from now on, for objects that leave it: the one
    /// that a thread's slot holds does not, since the slot ends with the module.
    void keepModuleLoaded() { moduleLock_.emplace(); }

  private:
    std::optional<velk::com::ModuleLock> moduleLock_;
    WORD code_ = 0;
    WORD reserved_ = 0;
    velk::com::Bstr source_;
    velk::com::Bstr description_;
    velk::com::Bstr helpFile_;
    DWORD helpContext_ = 0;
    // Carried along, never used and never called.
    void* reservedPointer_ = nullptr;
    HRESULT(STDAPICALLTYPE* deferredFillIn_)(EXCEPINFO*) = nullptr;
    SCODE scode_ = 0;
};

namespace velk::adapter {

/// The calling thread's last exception from now on; empty for none.
void setLastException(mzComPtrC const& value);

/// The calling thread's last exception, which may be empty; an empty exception
/// object takes its place.
mzComPtrC takeLastException();

/// Makes a copy of `info`, or no object when there is no memory for it, the
/// calling thread's last exception.
void rememberException(EXCEPINFO const& info);
/// The same with an empty exception object.
void resetLastException();

}  // namespace velk::adapter
