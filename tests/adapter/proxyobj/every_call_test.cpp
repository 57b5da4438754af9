#include "proxyobj/every_call.h"

#include "proxyobj/XConfigC.h"
#include "support/recording_object.h"

namespace velk::test {
namespace {

// Lives while the calls are made.
mzIUnknown* objectForParameters = nullptr;

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
    ASSERT_EQ(calls.size(), observer.expected().size());
    for (std::size_t at = 0; at < calls.size(); ++at) {
        auto const& expected = observer.expected()[at];
        SCOPED_TRACE(std::string(expected.className) + "." + expected.member);
        EXPECT_EQ(calls[at].name, expected.member);
        EXPECT_EQ(calls[at].callKind, expected.callKind);
        EXPECT_EQ(calls[at].arguments.size(), expected.arguments);
    }
    EXPECT_GT(calls.size(), 1000U);
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
