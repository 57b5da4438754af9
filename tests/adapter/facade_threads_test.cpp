#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include "conversion/conversions.h"
#include "native_to_host/facade.h"
#include "support/host_calls.h"
#include "support/native_values.h"
#include "support/recording_object.h"
#include "support/start_gate.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

void onThreads(int count, std::function<void(int thread)> const& action) {
    StartGate gate(count);
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index) {
        threads.emplace_back([&, index] {
            gate.arriveAndWait();
            action(index);
        });
    }
    for (auto& thread : threads) thread.join();
}

TEST(FacadeThreads, ThreadsCallOneFacadeAndFacadesOfTheirOwn) {
    RecordingHolder const host;
    host->respond = [](RecordedCall const& call) {
        return Answer{mzSuccess, call.arguments.empty() ? mzComVariantC() : call.arguments[0]};
    };
    {
        ComPtr<Ivelkdspwrap> shared;
        ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), shared), S_OK);
        onThreads(4, [&](int index) {
            for (int round = 0; round < 200; ++round) {
                ComPtr<Ivelkdspwrap> own;
                ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), own), S_OK);
                int const expected = index * 1000 + round;
                std::basic_string<OLECHAR> name = OLESTR("member");
                name += static_cast<OLECHAR>('a' + round % 20);
                for (auto* const facade : {own.get(), shared.get()}) {
                    Arguments arguments{integerValue(expected)};
                    auto const outcome =
                        invoke(*facade, idOf(*facade, name), DISPATCH_METHOD, arguments.get());
                    ASSERT_EQ(outcome.code, S_OK);
                    ASSERT_EQ(outcome.result.get().lVal, expected);
                }
            }
        });
    }
    EXPECT_EQ(host->calls().size(), 1600U);
    EXPECT_EQ(host->references(), 1U);
}

// As an unknown object the facade is wrapped, and its wrapper, which any
// thread may use, fetches it from the global interface table for each call.
TEST(FacadeThreads, ThreadsCallTheWrapperOfOneFacade) {
    constexpr int rounds = 50'000;
    RecordingHolder const host;
    {
        ComPtr<Ivelkdspwrap> facade;
        ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
        VARIANT const unknown =
            makeValue(VT_UNKNOWN, [&](VARIANT& value) { value.punkVal = facade.get(); });
        mzComVariantC wrapped;
        ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(unknown, wrapped, false, true));
        auto const wrapper = dispatchIn(wrapped);
        ASSERT_TRUE(wrapper.isValid());
        onThreads(4, [&](int) {
            for (int round = 0; round < rounds; ++round)
                ASSERT_EQ(callHost(wrapper.iface(), "Member", mzCallMethod).code, mzSuccess);
        });
    }
    EXPECT_EQ(host->calls().size(), std::size_t{4} * rounds);
    mzRunGlobalCleanup();
    EXPECT_EQ(host->references(), 1U);
}

}  // namespace
