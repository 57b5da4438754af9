#include <gtest/gtest.h>

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

TEST(FacadeThreads, ThreadsWithFacadesOfTheirOwn) {
    RecordingHolder const shared;
    shared->respond = [](RecordedCall const& call) {
        return Answer{mzSuccess, call.arguments.empty() ? mzComVariantC() : call.arguments[0]};
    };
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&shared, index] {
            for (int round = 0; round < 200; ++round) {
                ComPtr<Ivelkdspwrap> facade;
                ASSERT_EQ(velk::adapter::createBoundFacade(shared.dispatch(), facade), S_OK);
                int const expected = index * 1000 + round;
                std::basic_string<OLECHAR> name = OLESTR("member");
                name += static_cast<OLECHAR>('a' + round % 20);
                Arguments arguments{integerValue(expected)};
                auto const outcome = invoke(*facade.get(), idOf(*facade.get(), name),
                                            DISPATCH_METHOD, arguments.get());
                ASSERT_EQ(outcome.code, S_OK);
                ASSERT_EQ(outcome.result.get().lVal, expected);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(shared->references(), 1U);
}

TEST(FacadeThreads, ThreadsCallingOneFacade) {
    RecordingHolder const host;
    ComPtr<Ivelkdspwrap> facade;
    ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
    std::vector<std::thread> threads;
    for (int index = 0; index < 4; ++index) {
        threads.emplace_back([&facade] {
            for (int round = 0; round < 200; ++round) {
                DISPID const id = idOf(*facade.get(), OLESTR("shared"));
                ASSERT_EQ(invoke(*facade.get(), id, DISPATCH_METHOD, nullptr).code, S_OK);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(host->calls().size(), 800U);
}

// As an unknown object the facade is wrapped, and its wrapper, which any
// thread may use, fetches it from the global interface table for each call.
TEST(FacadeThreads, ThreadsCallingTheWrapperOfOneFacade) {
    constexpr int threadCount = 4;
    constexpr int rounds = 50'000;
    RecordingHolder const host;
    {
        ComPtr<Ivelkdspwrap> facade;
        ASSERT_EQ(velk::adapter::createBoundFacade(host.dispatch(), facade), S_OK);
        VARIANT unknown{};
        unknown.vt = VT_UNKNOWN;
        unknown.punkVal = facade.get();
        mzComVariantC wrapped;
        ASSERT_TRUE(convertMSCOMVariant2MZCOMVariant(unknown, wrapped, false, true));
        auto const wrapper = dispatchIn(wrapped);
        ASSERT_TRUE(wrapper.isValid());
        StartGate gate(threadCount);
        std::vector<std::thread> threads;
        for (int index = 0; index < threadCount; ++index) {
            threads.emplace_back([&] {
                gate.arriveAndWait();
                for (int round = 0; round < rounds; ++round) {
                    ASSERT_EQ(callHost(wrapper.iface(), "Member", mzCallMethod).code, mzSuccess);
                }
            });
        }
        for (auto& thread : threads) thread.join();
    }
    EXPECT_EQ(host->calls().size(), std::size_t{threadCount} * rounds);
    mzRunGlobalCleanup();
    EXPECT_EQ(host->references(), 1U);
}

}  // namespace
