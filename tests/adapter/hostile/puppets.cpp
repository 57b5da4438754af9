#include "hostile/puppets.h"

#include <stdexcept>

#include "hostile/values.h"
#include "servers/automation/support/automation_server.h"
#include "support/scripted_dispatch.h"

namespace velk::test::hostile {
namespace {

HRESULT STDAPICALLTYPE fillIn(EXCEPINFO* info) {
    info->bstrDescription = com::makeBstr(OLESTR("later")).release();
    return S_OK;
}

void throwSomething(Actor& actor) {
    if (actor.choices.oneIn(2)) throw actor.choices.byte();
    throw std::runtime_error("puppet");
}

HRESULT fail(Actor& actor, NativeCallArguments const& call) {
    if (call.wrongArgument) *call.wrongArgument = actor.choices.bits<UINT>();
    if (call.exception && actor.choices.oneIn(2)) {
        *call.exception = {};
        call.exception->scode = actor.choices.bits<SCODE>();
        call.exception->bstrSource = com::makeBstr(memberName(actor)).release();
        if (actor.choices.oneIn(2)) call.exception->pfnDeferredFillIn = &fillIn;
    }
    return oddCode(actor);
}

/// What a call of a native puppet does; nothing on threads of others.
HRESULT act(NativeCallArguments& call) {
    Actor* const actor = Actor::current();
    if (!actor) return S_OK;
    switch (actor->choices.below(8)) {
        case 1:
            actor->runNested();
            break;
        case 2:
            for (UINT i = 0; i < call.parameters.cArgs; ++i) {
                VARIANT const& argument = call.parameters.rgvarg[i];
                if (argument.vt != VT_DISPATCH && argument.vt != VT_UNKNOWN) continue;
                actor->world.keep(com::ComPtr<IUnknown>(argument.punkVal), actor->choices.byte());
            }
            break;
        case 3:
            changeReferred(*actor, call.parameters);
            break;
        case 4:
            throwSomething(*actor);
            break;
        case 5:
            return fail(*actor, call);
        case 6:
            actor->runNested();
            changeReferred(*actor, call.parameters);
            break;
        default:
            break;
    }
    if (call.result) *call.result = ownedValue(*actor);
    return S_OK;
}

class NativePuppet : public ScriptedDispatch {
  public:
    NativePuppet() : ScriptedDispatch(&act) { ++Puppet::alive; }
    ~NativePuppet() override { --Puppet::alive; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** out) noexcept override {
        Actor* const actor = Actor::current();
        if (actor && actor->choices.oneIn(16)) actor->runNested();
        return ScriptedDispatch::QueryInterface(id, out);
    }
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = ScriptedDispatch::Release();
        if (left > 0) return left;
        Actor* const actor = Actor::current();
        delete this;
        if (actor && actor->choices.oneIn(8)) actor->runNested();
        return 0;
    }
};

class HostPuppet : public mzComDispatchBaseC {
  public:
    HostPuppet() { ++Puppet::alive; }
    ~HostPuppet() override { --Puppet::alive; }

    unsigned invokeByName(mzComStringC const& name, unsigned, mzComVariantArrayC const& args,
                          mzComVariantC& result, mzComPtrT<mzIException>& exception) override {
        Actor* const actor = Actor::current();
        if (!actor) return mzSuccess;
        bool const isQuestion = name.toUtf8() == "__vbs_isnothing";
        if (isQuestion && !actor->choices.oneIn(4)) return mzMemberNotFound;
        switch (actor->choices.below(8)) {
            case 1:
                actor->runNested();
                break;
            case 2:
                for (int i = 0; i < args.size(); ++i)
                    actor->world.keep(args.at(i), actor->choices.byte());
                break;
            case 3:
                throwSomething(*actor);
                break;
            case 4:
                exception = mzComCreateException("puppet", "told so", {});
                return mzFailure;
            case 5:
                return actor->choices.byte();
            default:
                break;
        }
        result = hostValue(*actor);
        return mzSuccess;
    }
};

}  // namespace

com::ComPtr<IUnknown> nativePuppet() {
    return com::ComPtr<IUnknown>(new NativePuppet);
}

mzComVariantC hostPuppet() {
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>((new HostPuppet)->getIUnknown()));
    return value;
}

std::basic_string<OLECHAR> Puppet::serverPath() {
    return AutomationServer::path();
}

}  // namespace velk::test::hostile
