#include "VelkQXTProxy/variant_wrapper.h"

#include <new>

#include "VelkQXTProxy/array_access.h"
#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/record_access.h"
#include "VelkQXTProxy/record_creation.h"
#include "VelkQXTProxy/script_values.h"
#include "VelkQXTProxy/type_change.h"
#include "com/error.h"
#include "conversion/conversions.h"
#include "host/proxy_member.h"

using velk::adapter::HeldValue;
using velk::adapter::MemberCall;
using velk::adapter::raise;
using velk::com::Variant;

namespace {

unsigned createValue(MemberCall const& call, HeldValue& held) {
    auto const type = velk::adapter::typeCode(call.args.at(0));
    if (!type) return raise(velk::adapter::invalidParameter(0), call.exception);
    held.reset(*type);
    if (*type == VT_RECORD) return velk::adapter::createRecord(call, held);
    if (*type == VT_ARRAY) return velk::adapter::createArray(call, held);
    return mzSuccess;
}

}  // namespace

vbsComVariantWrapperC::vbsComVariantWrapperC() {
    setNonStickyThread();
}

mzComPtrT<mzIUnknown> vbsComVariantWrapperC::make(Variant value) {
    auto* const made = new (std::nothrow) vbsComVariantWrapperC;
    if (!made) return {};
    mzComPtrT<mzIUnknown> wrapper(made->getIUnknown());
    made->value_.replace(std::move(value));
    return wrapper;
}

unsigned vbsComVariantWrapperC::queryInterface(mzIIDS const& iid, mzComPtrC& out) {
    if (!iid.equal(mzIComVariantWrapper::interfaceId())) {
        return proxyObjectC::queryInterface(iid, out);
    }
    out.attach(static_cast<mzIComVariantWrapper*>(this));
    return mzSuccess;
}

template <typename Action>
unsigned vbsComVariantWrapperC::alone(Action const& action) {
    mzSingleThreadUseC::Use const entered(singleThreadUse());
    if (!entered.granted()) return mzFailure;
    action();
    return mzSuccess;
}

unsigned vbsComVariantWrapperC::getVariant(VARIANT& out) {
    return alone([&] {
        HeldValue::Use const use(value_);
        velk::com::copyVariant(value_.get(), out);
    });
}

unsigned vbsComVariantWrapperC::setVariant(VARIANT const& value) {
    return alone([&] {
        Variant copy;
        if (SUCCEEDED(velk::com::copyReferredTo(value, copy))) value_.replace(std::move(copy));
    });
}

unsigned vbsComVariantWrapperC::getVartype(unsigned& type) {
    return alone([&] { type = value_.type(); });
}

unsigned vbsComVariantWrapperC::getFlags(unsigned& flags) {
    return alone([&] { flags = flags_; });
}

unsigned vbsComVariantWrapperC::toHostVariant(mzComVariantC& value) {
    return alone([&] {
        HeldValue::Use const use(value_);
        convertMSCOMVariant2MZCOMVariant(value_.get(), value, true, false);
    });
}

unsigned vbsComVariantWrapperC::invokeByName(mzComStringC const& name, unsigned callKind,
                                             mzComVariantArrayC const& args, mzComVariantC& result,
                                             mzComPtrT<mzIException>& exception) {
    mzSingleThreadUseC::Use const entered(singleThreadUse());
    if (!entered.granted()) {
        result.clear();
        return raise(mzInUseText, exception);
    }
    HeldValue::Use const use(value_);
    try {
        return callMember({name, callKind, args, result, exception});
    } catch (...) {
        return velk::adapter::raiseCurrentException(exception);
    }
}

// The order of the tests is what scripts rely on: a record, for one, has no
// members but its fields once the first four are passed.
unsigned vbsComVariantWrapperC::callMember(MemberCall const& call) {
    if (call.hasDefaultName()) {
        if (call.isMethod() && call.count() == 0) return toHostVariant(call.result);
    } else if (call.names("Copy") && call.count() == 0) {
        call.result.set(make(velk::com::copyVariant(value_.get())));
        return mzSuccess;
    } else if (call.names("ChangeType") && call.count() > 0) {
        return velk::adapter::changeType(call, value_);
    } else if (call.names("Create") && call.count() > 0) {
        return createValue(call, value_);
    }
    if (value_.type() == VT_RECORD) return velk::adapter::accessRecord(call, value_.get());
    if (value_.type() & VT_ARRAY) {
        if (auto const code = velk::adapter::accessArray(call, value_.get())) return *code;
    }
    return callProperty(call);
}

unsigned vbsComVariantWrapperC::callProperty(MemberCall const& call) {
    bool const putsOne = call.isPut() && call.count() == 1;
    if (call.names("flags") && call.isGet()) {
        call.result.set(static_cast<int>(flags_));
        return mzSuccess;
    }
    if (call.names("flags") && putsOne) {
        if (int flags = 0; call.args.at(0).getExt(flags) == mzSuccess) {
            flags_ = static_cast<unsigned>(flags);
        }
        return mzSuccess;
    }
    if (call.names("vt") && call.isGet()) {
        call.result.set(static_cast<int>(value_.type()));
        return mzSuccess;
    }
    if (call.names("vt") && putsOne) return putType(call.args.at(0));
    if (call.names("val") && call.isGet() && call.count() == 0) return toHostVariant(call.result);
    if (call.names("val") && putsOne) {
        velk::adapter::Converted value(call.args.at(0));
        if (value.isInUse()) return raise(mzInUseText, call.exception);
        value_.replace(value.take());
        return mzSuccess;
    }
    return proxyObjectC::invokeByName(call.name, call.kind, call.args, call.result, call.exception);
}

unsigned vbsComVariantWrapperC::putType(mzComVariantC const& type) {
    auto const code = velk::adapter::typeCode(type);
    if (!code) return mzFailure;
    // An array that someone holds locked is not given up.
    if (SAFEARRAY* const array = velk::adapter::arrayIn(value_.get()); array && array->cLocks > 0) {
        throw velk::com::Error(DISP_E_ARRAYISLOCKED);
    }
    value_.reset(*code);
    return mzSuccess;
}

proxyMemberDescListS const* vbsComVariantWrapperC::getStaticProxyTypeInfo() {
    static proxyMemberDescS const members[] = {proxyMembersEnd()};
    static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                        nullptr};
    static proxyMemberDescListS const record = {"vbsComVariantWrapperC",
                                                &proxyCastTo<vbsComVariantWrapperC>,
                                                bases,
                                                members,
                                                "comadapter.variantwrapper",
                                                2,
                                                &proxyCreate<vbsComVariantWrapperC>,
                                                "VelkQXTProxy",
                                                1075};
    return &record;
}
