#include "proxyobj/every_call.h"

#include "proxyobj/XConfigC.h"
#include "proxyobj/client_table.h"
#include "support/recording_object.h"

namespace velk::test {
namespace {

// Lives while the calls are made.
mzIUnknown* objectForParameters = nullptr;

unsigned callKindOf(ListedKind kind) {
    switch (kind) {
        case ListedKind::get:
            return mzCallPropertyGet;
        case ListedKind::put:
            return mzCallPropertyPut;
        default:
            return mzCallMethod;
    }
}

/// Puts a number into every script variable among the arguments.
Answer fillVariables(RecordedCall const& call) {
    for (mzComVariantC const& argument : call.arguments) {
        mzComPtrT<mzScriptSymbolRefI> const variable{mzComPtrC(objectIn(argument))};
        if (!variable.isValid()) continue;
        mzComVariantArrayC value;
        value.append(leftNumber);
        mzComVariantC none;
        mzComPtrT<mzIException> exception;
        variable->invokeByName("", mzCallPropertyPut, value, none, exception);
    }
    return {mzSuccess, answeredNumber, {}};
}

TEST(TypedClients, CallTheirMembersAsTheListSays) {
    RecordingHolder const object;
    object->respond = fillVariables;
    RecordingHolder const other;
    objectForParameters = other.dispatch();
    CallObserver observer;
    callEveryMember(observer, object.dispatch());
    objectForParameters = nullptr;
    auto const calls = object->calls();
    std::size_t at = 0;
    for (ListedClass const& listed : listedClasses()) {
        for (ListedMember const& member : listed.members) {
            if (member.kind == ListedKind::constant) continue;
            ASSERT_LT(at, calls.size());
            SCOPED_TRACE(std::string(listed.name) + "." + member.name);
            EXPECT_STREQ(observer.expected().at(at).className, listed.name);
            EXPECT_EQ(calls[at].name, member.name);
            EXPECT_EQ(calls[at].callKind, callKindOf(member.kind));
            EXPECT_EQ(calls[at].arguments.size(), static_cast<std::size_t>(member.parameters));
            ++at;
        }
    }
    EXPECT_EQ(at, calls.size());
}

TEST(TypedClients, ThatAreUnboundGiveDefaults) {
    scripting::proxyobj::XConfigC const client;
    EXPECT_FALSE(client.isBound());
    scripting::proxyobj::XConfigC const failed(static_cast<mzIUnknown*>(nullptr));
    EXPECT_FALSE(failed.isBound());
    // Nobody makes this object here.
    scripting::proxyobj::XConfigC const unknown(scripting::createNew);
    EXPECT_FALSE(unknown.isBound());
}

}  // namespace

mzIUnknown* sampleObject() {
    return objectForParameters;
}

}  // namespace velk::test
