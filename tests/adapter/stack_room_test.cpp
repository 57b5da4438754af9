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

constexpr std::size_t kilobyte = 1024;

void onEveryStack(std::function<void()> const& action) {
    if (!canChooseStacks()) GTEST_SKIP() << "the sanitizer needs the stacks";
    for (std::size_t const size : {128, 256, 8192}) {
        SCOPED_TRACE("thread of KiB: " + std::to_string(size));
        runOnThread(size * kilobyte, action);
    }
    for (auto const& [size, above] : {std::pair{128, 0}, {1024, 0}, {128, 4096}}) {
        SCOPED_TRACE("coroutine of KiB: " + std::to_string(size) + " below other memory of " +
                     std::to_string(above));
        runOnOwnStack(size * kilobyte, above * kilobyte, action);
    }
}

TEST(StackRoom, OneCallIsAnswered) {
    onEveryStack([] {
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

TEST(StackRoom, CallsBackAndForthEnd) {
    onEveryStack([] {
        int depth = 0;
        auto const outcome = callWithoutEnd(depth);
        EXPECT_EQ(outcome.code, mzFailure);
        EXPECT_NE(outcome.text().find("nested too deeply"), std::string::npos)
            << outcome.text().substr(0, 400);
        EXPECT_GT(depth, 2);
    });
}

}  // namespace
