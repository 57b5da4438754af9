#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "VelkQXTProxy/dispatch_wrapper.h"
#include "VelkQXTProxy/exception_info.h"
#include "com/com_ptr.h"
#include "host/module_singleton.h"
#include "support/host_calls.h"
#include "support/scripted_dispatch.h"

namespace {

using namespace velk::test;
using Registry = mzModuleSingletonT<VelkComAdapterGlobal, VelkComAdapterGlobal::cleanupPriority>;

constexpr int rounds = 300;

/// A registration in the table that lasts as long as this. Wine frees an
/// object's stub twice when its last registration goes while a new one comes,
/// so the test keeps one of its own.
class Registered {
  public:
    explicit Registered(IUnknown& object) {
        PCoInitializer::attach(0);
        EXPECT_EQ(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IGlobalInterfaceTable, table_.putVoid()),
                  S_OK);
        EXPECT_EQ(table_->RegisterInterfaceInGlobal(&object, IID_IDispatch, &cookie_), S_OK);
    }
    ~Registered() { EXPECT_EQ(table_->RevokeInterfaceFromGlobal(cookie_), S_OK); }
    Registered(Registered const&) = delete;
    Registered& operator=(Registered const&) = delete;

  private:
    velk::com::ComPtr<IGlobalInterfaceTable> table_;
    DWORD cookie_ = 0;
};

/// Any outcome is right while the registry comes and goes, but for a crash and
/// for a call that reaches no object and still succeeds with a value.
void useWrappers(mzIDispatch* shared, mzIComDispatchWrapper* sharedBinding,
                 ScriptedDispatch& native, std::atomic<int>& answers) {
    for (int round = 0; round < rounds; ++round) {
        mzComPtrT<mzIDispatch> const own(new vbsComDispatchWrapperC(&native));
        for (mzIDispatch* const wrapper : {own.iface(), shared}) {
            auto const outcome = callHost(wrapper, "Member", mzCallMethod, {round});
            if (outcome.code != mzSuccess) continue;
            ASSERT_EQ(describe(outcome.result), "integer " + std::to_string(round));
            ++answers;
        }
        if (round % 10 == 0) sharedBinding->setDispatch(round % 20 == 0 ? &native : nullptr);
    }
    velk::adapter::setLastException({});
}

TEST(DispatchWrapperThreads, WrappersOutliveTheRegistry) {
    ScriptedDispatch native([](NativeCallArguments& call) {
        *call.result = call.parameters.rgvarg[0];
        return S_OK;
    });
    std::atomic<int> answers{0};
    {
        Registered const kept(native);
        auto* const object = new vbsComDispatchWrapperC(&native);
        mzComPtrT<mzIDispatch> const shared(object);
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] { useWrappers(shared.iface(), object, native, answers); });
        }
        for (int i = 0; i < 20; ++i) {
            Registry::cleanup();
            std::this_thread::yield();
        }
        for (auto& thread : threads) thread.join();
    }
    EXPECT_GT(answers, 0);
    Registry::cleanup();
    EXPECT_EQ(native.references(), 0U);
}

/// A native object that wraps another one when its last reference goes.
class WrapsAtItsEnd : public ScriptedDispatch {
  public:
    explicit WrapsAtItsEnd(ScriptedDispatch& other) : other_(other) {}
    ULONG STDMETHODCALLTYPE Release() noexcept override {
        ULONG const left = ScriptedDispatch::Release();
        if (left == 0) made_ = mzComPtrT<mzIDispatch>(new vbsComDispatchWrapperC(&other_));
        return left;
    }
    mzIDispatch* made() const { return made_.iface(); }

  private:
    ScriptedDispatch& other_;
    mzComPtrT<mzIDispatch> made_;
};

TEST(DispatchWrapperThreads, WrapperThatIsMadeByTheCleanupStaysEmpty) {
    ScriptedDispatch other;
    WrapsAtItsEnd native(other);
    mzComPtrT<mzIDispatch> const wrapper(new vbsComDispatchWrapperC(&native));
    Registry::cleanup();
    ASSERT_NE(native.made(), nullptr);
    EXPECT_EQ(callHost(native.made(), "Member", mzCallMethod).code, mzFailure);
    EXPECT_EQ(other.references(), 0U);
    // The next registry is none of the clean-up's business.
    mzComPtrT<mzIDispatch> const later(new vbsComDispatchWrapperC(&other));
    EXPECT_EQ(callHost(later.iface(), "Member", mzCallMethod).code, mzSuccess);
    velk::adapter::setLastException({});
}

}  // namespace
