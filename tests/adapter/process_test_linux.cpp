// What only a whole process shows: its end, and a system without resources.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "host/host.h"
#include "module/interfaces.h"
#include "support/loaded_module.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool addressSpaceCanBeLimited = false;
#else
constexpr bool addressSpaceCanBeLimited = true;
#endif

/// A loaded module that nobody frees, and a proxy of it.
IVelkCOMProxy* keptProxy() {
    static LoadedModule const* const module = new LoadedModule;
    ComPtr<IVelkCOMProxy> proxy;
    module->classFactory(CLSID_VelkCOMProxy)
        ->CreateInstance(nullptr, IID_IVelkCOMProxy, proxy.putVoid());
    return proxy.detach();
}

/// No thread gets a stack any more.
void forbidNewThreads() {
    std::ifstream statistics("/proc/self/statm");
    rlim_t pages = 0;
    statistics >> pages;
    rlim_t const bytes = pages * 4096 + (rlim_t{2} << 20);
    rlimit const limit{bytes, bytes};
    setrlimit(RLIMIT_AS, &limit);
}

[[noreturn]] void askWithoutThreads() {
    auto* const proxy = keptProxy();
    forbidNewThreads();
    auto const before = std::chrono::steady_clock::now();
    IDispatch* out = proxy;
    bool const right = proxy->CreateObject(nullptr, &out) == S_FALSE &&
                       proxy->GetObject(nullptr, &out) == S_FALSE && out == proxy &&
                       proxy->InitApplication(nullptr, nullptr) == S_OK &&
                       std::chrono::steady_clock::now() - before < std::chrono::seconds(10);
    std::_Exit(right ? 0 : 1);
}

[[noreturn]] void endWithoutTerminating() {
    keptProxy()->InitApplication(nullptr, nullptr);
    std::exit(0);
}

/// Holds the start of the application up until it is let go.
class SlowStart : public mzComServerStateEventC {
  public:
    SlowStart() : mzComServerStateEventC(1000) { init(); }
    unsigned serverInit() override {
        while (!mayGoOn) mzSleep(1);
        return mzSuccess;
    }

    std::atomic<bool> mayGoOn{false};
};

/// Frees the module while the thread of a start that was given up runs its code.
[[noreturn]] void freeWhileStarting() {
    SlowStart start;
    bool right = false;
    {
        LoadedModule const module;
        ComPtr<IVelkCOMProxy> proxy;
        module.classFactory(CLSID_VelkCOMProxy)
            ->CreateInstance(nullptr, IID_IVelkCOMProxy, proxy.putVoid());
        IDispatch* out = nullptr;
        right = proxy->CreateObject(nullptr, &out) == S_FALSE;
        proxy.reset();
        right = right && module.canUnloadNow() == S_OK;
    }
    // The process ends, too, while the application starts.
    std::thread([&start] {
        mzSleep(100);
        start.mayGoOn = true;
    }).detach();
    std::exit(right ? 0 : 1);
}

class Process : public testing::Test {
  protected:
    void SetUp() override { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
};

TEST_F(Process, EndsCleanlyWhileTheApplicationRuns) {
    EXPECT_EXIT(endWithoutTerminating(), testing::ExitedWithCode(0), "");
}

TEST_F(Process, ApplicationThatCannotStartIsAnAnswerAndNoWait) {
    if (!addressSpaceCanBeLimited) GTEST_SKIP() << "the sanitizer needs the address space";
    EXPECT_EXIT(askWithoutThreads(), testing::ExitedWithCode(0), "");
}

TEST_F(Process, ModuleOutlivesAStartThatTookTooLong) {
    EXPECT_EXIT(freeWhileStarting(), testing::ExitedWithCode(0), "");
}

}  // namespace
