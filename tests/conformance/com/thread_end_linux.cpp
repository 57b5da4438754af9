/// Modules are told when a thread ends.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <oleauto.h>

#include "conformance/com/test_classes.h"
#include "support/start_gate.h"

namespace {

using namespace velk::test;

/// The server that counts ending threads, attached while this lives.
class Watcher {
    template <typename Signature, typename... Arguments>
    auto call(char const* name, Arguments... arguments) {
        auto* const address = reinterpret_cast<void*>(GetProcAddress(module_, name));
        return reinterpret_cast<Signature*>(address)(arguments...);
    }

  public:
    Watcher() : module_(LoadLibraryW(serverPath(OLESTR("velktest_thread_watcher")).c_str())) {
        call<void()>("watchThreads");
    }
    Watcher(Watcher const&) = delete;
    Watcher& operator=(Watcher const&) = delete;
    ~Watcher() {
        setAction(nullptr);
        call<void()>("unwatchThreads");
        FreeLibrary(module_);
    }
    int detaches() { return call<int()>("countDetaches"); }
    void setAction(void (*action)()) { call<void(void (*)())>("setDetachAction", action); }
    void unwatch() { call<void()>("unwatchThreads"); }

  private:
    HMODULE module_;
};

TEST(ThreadEnd, EveryWayOfMeetingTheLayerCounts) {
    void (*const meetings[])() = {
        [] { static_cast<void>(GetCurrentThreadId()); },
        [] { SetLastError(1); },
        [] { CoTaskMemFree(CoTaskMemAlloc(1)); },
        [] { CoUninitialize(), CoInitializeEx(nullptr, COINIT_MULTITHREADED), CoUninitialize(); },
        [] {
            HKEY key = nullptr;
            RegOpenKeyExW(HKEY_CURRENT_USER, OLESTR("Software"), 0, KEY_READ, &key);
            RegCloseKey(key);
        },
    };
    Watcher watcher;
    int expected = watcher.detaches();
    for (auto* const meet : meetings) {
        std::thread(meet).join();
        EXPECT_EQ(watcher.detaches(), ++expected);
    }
    std::thread([] {}).join();
    EXPECT_EQ(watcher.detaches(), expected) << "a thread that never met the layer";
}

TEST(ThreadEnd, AThreadLeavesItsApartment) {
    std::thread([] { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }).join();
    EXPECT_EQ(classesHere(), CO_E_NOTINITIALIZED)
        << "the multi-threaded apartment has ended with its only thread";
}

std::atomic<bool> isInside{false}, mayLeave{false};

TEST(ThreadEnd, DetachingWaitsForThreadsThatAreInside) {
    Watcher watcher;
    watcher.setAction([] {
        isInside = true;
        while (!mayLeave) std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        isInside = false;
    });
    std::thread ending([] { static_cast<void>(GetCurrentThreadId()); });
    while (!isInside) std::this_thread::yield();
    mayLeave = true;
    watcher.unwatch();
    EXPECT_FALSE(isInside);
    ending.join();
}

TEST(ThreadEnd, AttachingAndDetachingWhileThreadsEnd) {
    std::atomic<bool> stop{false};
    int seen = 0;
    onThreads(4, [&](int number) {
        while (number != 0 && !stop) {
            std::thread([] { static_cast<void>(GetCurrentThreadId()); }).join();
        }
        for (int round = 0; number == 0 && round < 50; ++round) {
            Watcher watcher;
            while (watcher.detaches() == 0) std::this_thread::yield();
            seen += watcher.detaches();
        }
        if (number == 0) stop = true;
    });
    EXPECT_GE(seen, 50);
}

/// The last reference to a module goes while the module's entry leaves COM.
TEST(ThreadEnd, AModuleOutlastsItsEntryWhenItsThreadWasTheLastInCom) {
    Text const path = serverPath(OLESTR("velktest_com_leaver"));
    RegisteredClass const registered(plainClass, path, OLESTR("Both"));
    auto const use = [] {
        ApartmentStay const stay(COINIT_MULTITHREADED);
        Found object;
        EXPECT_EQ(create(plainClass, object), CLASS_E_CLASSNOTAVAILABLE);
    };
    for (int round = 0; round < 40; ++round) {
        StartGate gate(4);
        onThreads(4, [&](int) {
            gate.arriveAndWait();
            use();
        });
        std::thread(use).join();
        ASSERT_EQ(GetModuleHandleW(path.c_str()), nullptr) << "freed with the last thread";
    }
}

}  // namespace
