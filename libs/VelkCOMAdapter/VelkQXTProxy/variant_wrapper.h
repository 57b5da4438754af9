/// The host object that holds a native value.
#pragma once

#include "VelkQXTProxy/held_value.h"
#include "VelkQXTProxy/member_call.h"
#include "VelkQXTProxy/wrapper_interfaces.h"
#include "com/module_lock.h"
#include "host/auto_register.h"
#include "host/proxy_object.h"

/// Owns one VARIANT, and lets host scripts work with values that the host has
/// no type for: records, arrays, decimals, bare interfaces.
///
/// It may be called from any thread, but by one at a time: whoever comes while
/// another thread is in it is refused.
class vbsComVariantWrapperC : public proxyObjectC, public mzIComVariantWrapper {
  public:
    /// Holds VT_EMPTY.
    vbsComVariantWrapperC();
    /// A new wrapper that holds `value`; empty when there is no memory for it.
    static mzComPtrT<mzIUnknown> make(velk::com::Variant value);

    unsigned queryInterface(mzIIDS const& iid, mzComPtrC& out) override;
    unsigned addRef() override { return proxyObjectC::addRef(); }
    unsigned release() override { return proxyObjectC::release(); }
    /// Resolves members itself, since they depend on the type of the value.
    unsigned invokeByName(mzComStringC const& name, unsigned callKind,
                          mzComVariantArrayC const& args, mzComVariantC& result,
                          mzComPtrT<mzIException>& exception) override;
    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo();

    unsigned getVariant(VARIANT& out) override;
    unsigned setVariant(VARIANT const& value) override;
    unsigned getVartype(unsigned& type) override;
    unsigned getFlags(unsigned& flags) override;
    unsigned toHostVariant(mzComVariantC& value) override;

  private:
    /// Does `action` unless another thread is in the wrapper. Host result code.
    template <typename Action>
    unsigned alone(Action const& action);
    unsigned callMember(velk::adapter::MemberCall const& call);
    unsigned callProperty(velk::adapter::MemberCall const& call);
    unsigned putType(mzComVariantC const& type);

    velk::com::ModuleLock moduleLock_;
    velk::adapter::HeldValue value_;
    unsigned flags_ = 0;
};
