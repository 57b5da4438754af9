#include "host/coinit.h"

#include <windows.h>

#include <objbase.h>

#include <thread>

#include <gtest/gtest.h>

namespace {

/// What entering COM on this thread would answer, undone at once.
HRESULT probe(DWORD flags) {
    HRESULT const result = CoInitializeEx(nullptr, flags);
    if (SUCCEEDED(result)) CoUninitialize();
    return result;
}

void onNewThread(void (*body)()) {
    std::thread(body).join();
}

TEST(CoInitializer, EntersOnceAndLeavesOnce) {
    onNewThread([] {
        PCoInitializer::attach(COINIT_MULTITHREADED);
        PCoInitializer::attach(COINIT_MULTITHREADED);
        EXPECT_EQ(probe(COINIT_MULTITHREADED), S_FALSE);
        EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
        PCoInitializer::detach();
        // Out again: another apartment can be entered.
        EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), S_OK);
        PCoInitializer::detach();
        EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), S_OK);
    });
}

TEST(CoInitializer, LeavesAnotherApartmentAsItIs) {
    onNewThread([] {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        PCoInitializer::attach(COINIT_MULTITHREADED);
        PCoInitializer::detach();
        EXPECT_EQ(probe(COINIT_APARTMENTTHREADED), S_FALSE);
        CoUninitialize();
        EXPECT_EQ(probe(COINIT_MULTITHREADED), S_OK);
    });
}

TEST(CoInitializer, CanComeBack) {
    onNewThread([] {
        PCoInitializer::attach(0);
        PCoInitializer::detach();
        PCoInitializer::attach(0);
        EXPECT_EQ(probe(COINIT_MULTITHREADED), S_FALSE);
        PCoInitializer::detach();
    });
}

}  // namespace
