// Calls that go back and forth between the sides, on stacks of many kinds.

#include "port/stack_room.h"

#include <gtest/gtest.h>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/exception_info.h"
#include "support/host_calls.h"
#include "support/scripted_dispatch.h"
#include "support/stacks.h"

namespace {

using namespace velk::test;

struct Row {
    char const* name;
    bool ownStack;
    std::size_t size;
    std::size_t above;
};

constexpr std::size_t kilobyte = 1024;
constexpr Row rows[] = {
    {"thread of 128 KiB", false, 128 * kilobyte, 0},
    {"thread of 256 KiB", false, 256 * kilobyte, 0},
    {"thread of 8 MiB", false, 8192 * kilobyte, 0},
    {"coroutine of 128 KiB", true, 128 * kilobyte, 0},
    {"coroutine of 1 MiB", true, 1024 * kilobyte, 0},
    {"coroutine of 128 KiB below other memory", true, 128 * kilobyte, 4096 * kilobyte},
};

class StackRoom : public testing::TestWithParam<Row> {
  protected:
    void SetUp() override {
        if (!canChooseStacks()) GTEST_SKIP() << "the sanitizer needs the stacks";
    }
    static void run(std::function<void()> const& action) {
        GetParam().ownStack ? runOnOwnStack(GetParam().size, GetParam().above, action)
                            : runOnThread(GetParam().size, action);
    }
};

TEST_P(StackRoom, OneCallIsAnswered) {
    run([] {
        ScriptedDispatch native;
        mzComPtrT<mzIDispatch> const wrapper(new vbsComDispatchWrapperC(&native));
        EXPECT_EQ(callHost(wrapper.iface(), "Member", mzCallMethod).text(), "ok empty");
        velk::adapter::setLastException({});
    });
}

/// A host object and a native one that call each other without end.
HostOutcome callWithoutEnd(int& depth) {
    RecordingHolder const host;
    ScriptedDispatch native([](NativeCallArguments& call) {
        DISPPARAMS none{};
        velk::com::ExceptionInfo info;
        HRESULT const code = call.parameters.rgvarg[0].pdispVal->Invoke(
            0, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, info.address(), nullptr);
        if (code == DISP_E_EXCEPTION) *call.exception = info.release();
        return code;
    });
    mzComPtrT<mzIDispatch> const wrapper(new vbsComDispatchWrapperC(&native));
    host->respond = [&](RecordedCall const&) {
        ++depth;
        auto const outcome = callHost(wrapper.iface(), "Member", mzCallMethod, {host.asValue()});
        return Answer{outcome.code, outcome.result, outcome.exception};
    };
    auto outcome = callHost(wrapper.iface(), "Member", mzCallMethod, {host.asValue()});
    host->respond = {};
    host->forgetCalls();
    velk::adapter::setLastException({});
    return outcome;
}

TEST_P(StackRoom, CallsBackAndForthEnd) {
    run([] {
        int depth = 0;
        auto const outcome = callWithoutEnd(depth);
        EXPECT_EQ(outcome.code, mzFailure);
        EXPECT_NE(outcome.text().find("nested too deeply"), std::string::npos)
            << outcome.text().substr(0, 400);
        EXPECT_GT(depth, 2);
        RecordProperty("depth", depth);
    });
}

INSTANTIATE_TEST_SUITE_P(Stacks, StackRoom, testing::ValuesIn(rows), [](auto const& row) {
    std::string name = row.param.name;
    for (char& symbol : name) symbol = symbol == ' ' ? '_' : symbol;
    return name;
});

}  // namespace
