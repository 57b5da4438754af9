// Many calls of each kind. What a single one of them leaves behind shows in
// the counters of the host, of the native layer and of the server.

#include "host/diagnostics.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

constexpr int calls = 100000;
// Each of these asks the registry.
constexpr int creations = 1000;

class CallLeaks : public ScriptTest {
  protected:
    /// Makes the call again and again; the first one may leave caches.
    template <class Call>
    void repeat(char const* what, Call const& call, int times = calls) {
        call();
        long long const hostBefore = mzLiveCountTotal();
        long const serverBefore = server_->liveObjects();
        for (int i = 0; i < times; ++i) call();
        EXPECT_EQ(mzLiveCountTotal(), hostBefore) << what;
        EXPECT_EQ(server_->liveObjects(), serverBefore) << what;
    }
};

TEST_F(CallLeaks, CallsOfEveryKindLeaveNothingBehind) {
    auto const object = sample();
    auto const objectValue = valueOf(object);
    RecordingHolder const host;
    auto const held = variable(5);
    auto const array =
        dispatchIn(callHost(object.iface(), "MakeCube", mzCallMethod, {2, 2, 2}).result);
    auto const point =
        dispatchIn(callHost(object.iface(), "MakePoint", mzCallMethod, {3, 4}).result);
    repeat("numbers", [&] { callHost(object.iface(), "Add", mzCallMethod, {1, 2}); });
    repeat("texts", [&] { callHost(object.iface(), "EchoBstr", mzCallMethod, {"text"}); });
    repeat("native objects",
           [&] { callHost(object.iface(), "EchoDispatch", mzCallMethod, {objectValue}); });
    repeat("host objects", [&] {
        callHost(object.iface(), "EchoDispatch", mzCallMethod, {host.asValue()});
        host->forgetCalls();
    });
    repeat("references", [&] { callHost(object.iface(), "ChangeVariant", mzCallMethod, {held}); });
    repeat("elements", [&] { callHost(array.iface(), "", mzCallMethod, {1, 1, 1}); });
    repeat("fields", [&] { callHost(point.iface(), "", mzCallMethod, {"x"}); });
    repeat("unknown members", [&] { callHost(object.iface(), "Missing", mzCallMethod); });
    repeat("wrong arguments", [&] {
        callHost(object.iface(), "Add", mzCallMethod, {"x", objectValue});
    });
    repeat("failures", [&] {
        callHost(object.iface(), "Fail", mzCallMethod, {-1, "source", "text", "help", 1});
    });
}

TEST_F(CallLeaks, ObjectsMadeAndDroppedLeaveNothingBehind) {
    auto const object = sample();
    auto const createOne = [&] {
        callHost(adapter_.iface(), "CreateObject", mzCallMethod, {"VelkTest.Sample"});
    };
    repeat("objects", createOne, creations);
    auto const makeRecord = [&] { callHost(object.iface(), "MakePoint", mzCallMethod, {3, 4}); };
    repeat("records", makeRecord, creations);
    auto const point =
        dispatchIn(callHost(object.iface(), "MakePoint", mzCallMethod, {3, 4}).result);
    repeat("copies of records", [&] { callHost(point.iface(), "Copy", mzCallMethod); });
    repeat("arrays", [&] { callHost(object.iface(), "MakeCube", mzCallMethod, {2, 2, 2}); });
}

}  // namespace
