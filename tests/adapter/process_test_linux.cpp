// What only a whole process shows: its end, and a system without resources.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "interfaces.h"
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

}  // namespace
