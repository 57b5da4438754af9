#include "VelkQXTProxy/call_by_name.h"

#include <new>
#include <optional>

#include "VelkQXTProxy/call_arguments.h"
#include "VelkQXTProxy/call_failure.h"
#include "VelkQXTProxy/exception_info.h"
#include "VelkQXTProxy/member_lookup.h"
#include "com/error.h"
#include "com/owners.h"
#include "conversion/conversions.h"

namespace velk::adapter {
namespace {

struct Invocation {
    WORD flags = 0;
    bool isPut = false;
};

/// How the member is invoked; nothing when the default member cannot be used
/// so. The bits of the call kind are looked at in this order, the last one
/// that is set decides.
std::optional<Invocation> invocationFor(unsigned callKind, bool isDefaultMember) {
    Invocation invocation;
    if (callKind & mzCallMethod) invocation.flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
    if (callKind & mzCallPropertyGet) {
        if (isDefaultMember) return std::nullopt;
        invocation.flags = DISPATCH_PROPERTYGET;
    }
    if (callKind & mzCallPropertyPut) {
        if (isDefaultMember) return std::nullopt;
        invocation = {DISPATCH_PROPERTYPUT, true};
    }
    return invocation;
}

HRESULT invokeMember(NativeCall const& call, Member const& member, WORD flags,
                     DISPPARAMS& parameters, CallOutcome& outcome) {
    if (!member.forcedType) {
        return call.object->Invoke(member.id, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &parameters,
                                   outcome.result.put(), outcome.info.address(),
                                   &outcome.wrongArgument);
    }
    com::ComPtr<IUnknown> instance;
    HRESULT const code =
        call.object->QueryInterface(call.forcedIid, reinterpret_cast<void**>(instance.put()));
    // Type information takes an instance on trust.
    if (FAILED(code)) return code;
    if (!instance) return E_NOINTERFACE;
    return member.forcedType->Invoke(instance.get(), member.id, flags, &parameters,
                                     outcome.result.put(), outcome.info.address(),
                                     &outcome.wrongArgument);
}

/// The call and what follows it whatever its status is. Native code that
/// throws is a failure like any other.
void invokeAndCopyBack(NativeCall const& call, Member const& member, Invocation invocation,
                       CallArguments& arguments, mzComVariantArrayC const& args,
                       CallOutcome& outcome) {
    try {
        DISPPARAMS parameters = arguments.parameters(invocation.isPut);
        outcome.status = invokeMember(call, member, invocation.flags, parameters, outcome);
        arguments.copyBack(args);
    } catch (...) {
        outcome.takeException(call.name);
    }
}

unsigned failCall(NativeCall const& call, CallOutcome const& outcome,
                  mzComPtrT<mzIException>& exception) {
    rememberException(outcome.info.get());
    return raise(failureText(call.name, outcome), exception);
}

unsigned callMember(NativeCall const& call, mzComVariantArrayC const& args, mzComVariantC& result,
                    mzComPtrT<mzIException>& exception) {
    Member member;
    mzComStringC notFound;
    if (!findMember(call, member, notFound)) return raise(notFound, exception);
    auto const invocation = invocationFor(call.callKind, call.name.isEmpty());
    if (!invocation) return mzFailure;
    if (invocation->isPut && args.size() == 0) {
        CallOutcome missing;
        missing.status = DISP_E_BADPARAMCOUNT;
        return raise(failureText(call.name, missing), exception);
    }
    CallArguments arguments(args.size());
    if (!arguments.convert(args, invocation->isPut)) return mzFailure;
    CallOutcome outcome;
    invokeAndCopyBack(call, member, *invocation, arguments, args, outcome);
    if (outcome.status != S_OK) return failCall(call, outcome, exception);
    bool const hasHostForm =
        convertMSCOMVariant2MZCOMVariant(outcome.result.get(), result, false, true);
    return hasHostForm ? mzSuccess : mzFailure;
}

}  // namespace

unsigned callByName(NativeCall const& call, mzComVariantArrayC const& args, mzComVariantC& result,
                    mzComPtrT<mzIException>& exception) {
    // Around the call itself: the object may throw while it is asked for the
    // member, host objects while they are converted, the result while it is copied.
    try {
        return callMember(call, args, result, exception);
    } catch (com::Error const& error) {
        if (error.code() == E_OUTOFMEMORY) throw;
        return raiseCurrentException(exception);
    } catch (std::bad_alloc const&) {
        throw;
    } catch (...) {
        return raiseCurrentException(exception);
    }
}

}  // namespace velk::adapter
