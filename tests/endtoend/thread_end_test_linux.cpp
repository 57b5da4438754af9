#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <QCoreApplication>

#include <objbase.h>
#include <windows.h>

#include <oleauto.h>

#include "support/client.h"
#include "support/installed_module.h"
#include "support/start_gate.h"

// The threads that use the proxy, and the application's, end in any order; the
// last of them in COM takes the module down with it.

namespace {

using namespace velk::test;
using velk::com::ComPtr;

using Proxy = ComPtr<IDispatch>;

// What becomes of the calls is up to what other threads do.
void createObject(Proxy const& proxy) {
    EXPECT_TRUE(
        SUCCEEDED(call(proxy, OLESTR("CreateObject"), {OLESTR("qxttools.comadapter")}).code));
}

void createAndTerminate(Proxy const& proxy) {
    createObject(proxy);
    EXPECT_TRUE(SUCCEEDED(call(proxy, OLESTR("TerminateApplication")).code));
}

void doNothing(Proxy const&) {}

/// What a thread does before it ends, and need not have left COM.
using Use = void (*)(Proxy const&);
constexpr Use uses[] = {doNothing, createObject, createAndTerminate};

void useProxy(CLSID const& id, bool leaves, Use use) {
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    use(newProxy(id));
    if (leaves) CoUninitialize();
}

TEST(ThreadEnd, TheLastThreadInComEndsWhole) {
    ASSERT_EQ(InstalledModule().install(true, ""), S_OK);
    CLSID const id = proxyClass();
    constexpr int threadCount = 3;
    for (Use const use : uses) {
        for (int round = 0; round < 2; ++round) {
            StartGate gate(threadCount);
            std::vector<std::thread> threads;
            for (int number = 0; number < threadCount; ++number) {
                threads.emplace_back([&, number] {
                    gate.arriveAndWait();
                    useProxy(id, (number + round) % 2 == 0, use);
                });
            }
            for (auto& thread : threads) thread.join();
        }
    }
    EXPECT_EQ(InstalledModule().install(false, ""), S_OK);
}

/// Whether the module goes within some time: with the thread that ends, or, if
/// it had a reason to stay then, with the next one that leaves COM.
bool isGone() {
    auto const path = velk::com::fromUtf8(builtModule()).value();
    for (int poll = 0; poll < 100; ++poll) {
        if (GetModuleHandleW(path.c_str()) == nullptr) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (poll >= 15 && SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)))
            CoUninitialize();
    }
    return false;
}

TEST(ThreadEnd, TheApplicationsThreadDoesNotWaitForItself) {
    ASSERT_EQ(InstalledModule().install(true, ""), S_OK);
    CLSID const id = proxyClass();
    for (int round = 0; round < 2; ++round) {
        useProxy(id, false, doNothing);
        std::thread([&] { useProxy(id, true, createObject); }).join();
        auto* const application = QCoreApplication::instance();
        ASSERT_NE(application, nullptr);
        auto const applicationIsInCom = std::make_shared<StartGate>(2);
        auto const othersHaveLeft = std::make_shared<StartGate>(2);
        QMetaObject::invokeMethod(application, [=] {
            useProxy(id, false, doNothing);
            applicationIsInCom->arriveAndWait();
            othersHaveLeft->arriveAndWait();
            useProxy(id, true, createAndTerminate);
            CoUninitialize();
        });
        applicationIsInCom->arriveAndWait();
        CoUninitialize();
        othersHaveLeft->arriveAndWait();
        ASSERT_TRUE(isGone());
    }
    EXPECT_EQ(InstalledModule().install(false, ""), S_OK);
}

}  // namespace
