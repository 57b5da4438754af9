#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "VelkQXTProxy/variant_wrapper.h"
#include "conversions.h"
#include "support/host_calls.h"
#include "support/start_gate.h"

namespace {

using namespace velk::test;
using velk::com::Variant;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

std::string const refusal = std::string("Invoke DSP: ") + mzInUseText;

mzComPtrT<mzIDispatch> newWrapper() {
    return mzComPtrT<mzIDispatch>(mzComPtrC(vbsComVariantWrapperC::make({}).iface()));
}

/// Runs a function while it is converted, which asks it whether it is Nothing.
class Asked : public mzComDispatchBaseC {
  public:
    unsigned invokeByName(mzComStringC const&, unsigned, mzComVariantArrayC const&, mzComVariantC&,
                          mzComPtrT<mzIException>&) override {
        if (onQuestion) onQuestion();
        return mzMemberNotFound;
    }

    std::function<void()> onQuestion;
};

bool converts(mzComVariantC const& value) {
    Variant native;
    unsigned typedByRef = 0;
    unsigned flags = 0;
    bool const done = convertMZCOMVariant2MSCOMVariant(value, *native.address(), typedByRef, flags);
    if (!done) {
        EXPECT_EQ(native.get().vt, VT_EMPTY);
        EXPECT_EQ(typedByRef, 0U);
        EXPECT_EQ(flags, 0U);
    }
    return done;
}

/// What the host side offers besides calls by name.
void expectOperations(mzIDispatch* object, unsigned code) {
    mzComPtrT<mzIComVariantWrapper> const wrapper{mzComPtrC(object)};
    Variant native;
    unsigned number = 77;
    mzComVariantC value;
    EXPECT_EQ(wrapper->getVariant(*native.address()), code);
    EXPECT_EQ(wrapper->setVariant(native.get()), code);
    EXPECT_EQ(wrapper->getVartype(number), code);
    EXPECT_EQ(wrapper->getFlags(number), code);
    EXPECT_EQ(wrapper->toHostVariant(value), code);
    EXPECT_EQ(number == 77, code != mzSuccess);
    EXPECT_EQ(converts(valueOf(wrapper)), code == mzSuccess);
}

TEST(VariantWrapperThreads, OnlyTheThreadInsideMayComeIn) {
    auto const wrapper = newWrapper();
    auto const other = newWrapper();
    auto const array = newWrapper();
    callHost(array.iface(), "Create", method, {VT_ARRAY, VT_VARIANT, 1});
    mzComPtrT<Asked> const asked(new Asked);
    int questions = 0;
    asked->onQuestion = [&] {
        ++questions;
        EXPECT_EQ(callHost(wrapper.iface(), "vt", get).text(), "ok integer 0");
        expectOperations(wrapper.iface(), mzSuccess);
        std::thread([&] {
            EXPECT_EQ(callHost(wrapper.iface(), "vt", get).text(), refusal);
            expectOperations(wrapper.iface(), mzFailure);
            EXPECT_EQ(callHost(other.iface(), "val", put, {valueOf(wrapper)}).text(), refusal);
            EXPECT_EQ(
                callHost(other.iface(), "ChangeType", method, {VT_I4, valueOf(wrapper)}).text(),
                refusal);
            EXPECT_EQ(callHost(array.iface(), "", put, {0, valueOf(wrapper)}).text(), refusal);
        }).join();
    };
    mzComVariantC value;
    value.set(mzComPtrT<mzIUnknown>(asked->getIUnknown()));
    EXPECT_EQ(callHost(wrapper.iface(), "val", put, {value}).text(), "ok empty");
    EXPECT_EQ(questions, 1);
    std::thread([&] {
        EXPECT_EQ(callHost(wrapper.iface(), "vt", get).text(), "ok integer 9");
        expectOperations(wrapper.iface(), mzSuccess);
    }).join();
}

/// Each thread writes a text of its own; whoever reads finds one of them whole.
TEST(VariantWrapperThreads, ManyCallsAreRightOrRefused) {
    auto const wrapper = newWrapper();
    constexpr int threads = 4;
    auto const textOf = [](int thread) { return std::string(40, char('a' + thread)); };
    auto const isText = [&](std::string const& text) {
        return text.size() == 40 && text == std::string(40, text[0]) && text[0] >= 'a' &&
               text[0] < 'a' + threads;
    };
    callHost(wrapper.iface(), "val", put, {textOf(0).c_str()});
    std::atomic<int> done{0};
    StartGate gate(threads);
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread) {
        running.emplace_back([&, thread] {
            gate.arriveAndWait();
            mzComPtrT<mzIComVariantWrapper> const native{mzComPtrC(wrapper.iface())};
            for (int round = 0; round < 3'000; ++round) {
                auto outcome = callHost(wrapper.iface(), "val", put, {textOf(thread).c_str()});
                EXPECT_TRUE(outcome.code == mzSuccess || outcome.text() == refusal);
                for (char const* const name : {"val", ""}) {
                    outcome = callHost(wrapper.iface(), name, *name ? get : method);
                    if (outcome.code != mzSuccess) {
                        EXPECT_EQ(outcome.text(), refusal);
                        continue;
                    }
                    EXPECT_TRUE(isText(outcome.text().substr(8))) << outcome.text();
                    ++done;
                }
                outcome = callHost(wrapper.iface(), "Copy", method);
                EXPECT_TRUE(outcome.code == mzSuccess || outcome.text() == refusal);
                Variant copy;
                if (native->getVariant(*copy.address()) == mzSuccess) {
                    EXPECT_EQ(copy.get().vt, VT_BSTR);
                    native->setVariant(copy.get());
                }
            }
        });
    }
    for (auto& thread : running) thread.join();
    EXPECT_GT(done, 0);
}

}  // namespace
