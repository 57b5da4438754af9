#include <gtest/gtest.h>

#include <atomic>
#include <future>
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

/// A host object of the thread that made it, which calls a native one.
class Caller : public proxyObjectC {
  public:
    explicit Caller(mzComPtrT<mzIDispatch> native = {}) : native_(std::move(native)) {}
    int ask() { return callHost(native_.iface(), "Member", mzCallMethod).result.getInt(); }

    proxyMemberDescListS const* getProxyTypeInfo() override { return getStaticProxyTypeInfo(); }
    static proxyMemberDescListS const* getStaticProxyTypeInfo() {
        static char const* const file = "dispatch_wrapper_threads_test.cpp";
        static proxyMemberDescS const members[] = {proxyMethod<&Caller::ask>("Ask", file, 1),
                                                   proxyMembersEnd()};
        static proxyMemberDescListS const* const bases[] = {proxyObjectC::getStaticProxyTypeInfo(),
                                                            nullptr};
        static proxyMemberDescListS const record = {
            "Caller", proxyCastTo<Caller>, bases, members, "velktest.caller",
            0,        proxyCreate<Caller>, file,  1};
        return &record;
    }

  private:
    mzComPtrT<mzIDispatch> native_;
};

// The native object belongs to the apartment of a thread that waits for a call
// of its own, and that call needs the object.
TEST(DispatchWrapperThreads, NativeObjectOfAWaitingThreadAnswers) {
    mzCallLimitsS const before = mzComSetCallLimits({5'000, 10'000});
    std::promise<mzComPtrC> made;
    std::promise<mzComPtrT<mzIDispatch>> wrapped;
    std::atomic<bool> ended{false};
    std::thread owner([&] {
        made.set_value(mzComPtrC((new Caller(wrapped.get_future().get()))->getIUnknown()));
        while (!ended) mzComSleep(10, 0, nullptr);
    });
    std::thread([&] {
        ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
        ScriptedDispatch native([](NativeCallArguments& call) {
            call.result->vt = VT_I4;
            call.result->lVal = 41;
            return S_OK;
        });
        {
            mzComPtrT<mzIDispatch> const wrapper(new vbsComDispatchWrapperC(&native));
            wrapped.set_value(wrapper);
            mzComPtrT<mzIDispatch> const caller(made.get_future().get());
            EXPECT_EQ(callHost(caller.iface(), "Ask", mzCallMethod).text(), "ok integer 41");
        }
        ended = true;
        owner.join();
        Registry::cleanup();
        CoUninitialize();
    }).join();
    mzComSetCallLimits(before);
    velk::adapter::setLastException({});
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
