// Many calls of each kind. What a single one of them leaves behind shows in
// the counters of the host, of the native layer and of the server.

#include <functional>

#include "support/leaks.h"
#include "support/script_test.h"

namespace {

using namespace velk::test;

class CallLeaks : public ScriptTest {};

struct Row {
    char const* what;
    int times;
    std::function<void()> call;
};

TEST_F(CallLeaks, CallsOfEveryKindLeaveNothingBehind) {
    // Some ask the registry, or describe a type anew.
    constexpr int many = 20000;
    constexpr int few = 1000;
    auto const object = sample();
    auto const objectValue = valueOf(object);
    RecordingHolder const host;
    auto const held = variable(5);
    auto const made = [&](char const* member, std::initializer_list<mzComVariantC> arguments) {
        return dispatchIn(callHost(object.iface(), member, mzCallMethod, arguments).result);
    };
    auto const array = made("MakeCube", {2, 2, 2});
    auto const point = made("MakePoint", {3, 4});
    Row const rows[] = {
        {"numbers", many,
         [&] {
             callText(object, "Add", {1, 2});
         }},
        {"texts", many, [&] { callText(object, "EchoBstr", {"text"}); }},
        {"native objects", many, [&] { callText(object, "EchoDispatch", {objectValue}); }},
        {"host objects", many,
         [&] {
             callText(object, "EchoDispatch", {host.asValue()});
             host->forgetCalls();
         }},
        {"references", many, [&] { callText(object, "ChangeVariant", {held}); }},
        {"elements", many,
         [&] {
             callText(array, "", {1, 1, 1});
         }},
        {"fields", many, [&] { callText(point, "", {"x"}); }},
        {"unknown members", many, [&] { callText(object, "Missing"); }},
        {"wrong arguments", many,
         [&] {
             callText(object, "Add", {"x", objectValue});
         }},
        {"failures", many,
         [&] {
             callText(object, "Fail", {-1, "source", "text", "help", 1});
         }},
        {"objects", few, [&] { callText(adapter_, "CreateObject", {"VelkTest.Sample"}); }},
        {"records", few,
         [&] {
             made("MakePoint", {3, 4});
         }},
        {"copies of records", many, [&] { callText(point, "Copy"); }},
        {"arrays", many,
         [&] {
             made("MakeCube", {2, 2, 2});
         }},
    };
    for (auto const& row : rows) {
        // The first call may leave caches.
        row.call();
        std::string const before = thingsAlive();
        long const serverBefore = server_->liveObjects();
        for (int i = 0; i < row.times; ++i) row.call();
        EXPECT_EQ(thingsAlive(), before) << row.what;
        EXPECT_EQ(server_->liveObjects(), serverBefore) << row.what;
    }
}

}  // namespace
