#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include "conformance/com/counted_object.h"
#include "conformance/com/test_classes.h"
#include "support/expected_difference.h"

namespace {

using namespace velk::test;

constexpr DWORD unknownCookie = 0x7FFF0000;

HRESULT makeTable(REFIID riid, void** table, DWORD context = CLSCTX_INPROC_SERVER,
                  IUnknown* outer = nullptr) {
    return CoCreateInstance(CLSID_StdGlobalInterfaceTable, outer, context, riid, table);
}

/// The table, in the multi-threaded apartment: every thread may use the
/// registered objects directly.
struct GlobalInterfaces : testing::Test {
    ApartmentStay stay{COINIT_MULTITHREADED};
    IGlobalInterfaceTable* table = nullptr;
    CountedObject object;

    void SetUp() override {
        ASSERT_EQ(makeTable(IID_IGlobalInterfaceTable, reinterpret_cast<void**>(&table)), S_OK);
    }
    void TearDown() override {
        if (table != nullptr) table->Release();
        EXPECT_EQ(object.references, 0u);
    }
    HRESULT add(DWORD& cookie, REFIID riid = IID_IUnknown) {
        return table->RegisterInterfaceInGlobal(&object, riid, &cookie);
    }
    /// The answer for a cookie; an object that it gives is given back.
    HRESULT get(DWORD cookie, IUnknown*& found, REFIID riid = IID_IUnknown) {
        found = nullptr;
        HRESULT const result =
            table->GetInterfaceFromGlobal(cookie, riid, reinterpret_cast<void**>(&found));
        if (found != nullptr) found->Release();
        return result;
    }
};

TEST_F(GlobalInterfaces, ThereIsOneTable) {
    struct Case {
        char const* what;
        IID id;
        DWORD context;
        HRESULT expected;
    };
    Case const cases[] = {
        {"the table", IID_IGlobalInterfaceTable, CLSCTX_INPROC_SERVER, S_OK},
        {"its identity", IID_IUnknown, CLSCTX_ALL, S_OK},
        {"another interface", IID_IDispatch, CLSCTX_INPROC_SERVER, E_NOINTERFACE},
        {"another process", IID_IUnknown, CLSCTX_LOCAL_SERVER, REGDB_E_CLASSNOTREG},
    };
    for (auto const& entry : cases) {
        void* found = nullptr;
        EXPECT_EQ(makeTable(entry.id, &found, entry.context), entry.expected) << entry.what;
        EXPECT_EQ(found, SUCCEEDED(entry.expected) ? table : nullptr) << entry.what;
    }
    expectDifference(System::wine, "lets the table be part of another object", [&] {
        void* found = nullptr;
        EXPECT_EQ(makeTable(IID_IUnknown, &found, CLSCTX_INPROC_SERVER, &object),
                  CLASS_E_NOAGGREGATION);
    });
}

TEST_F(GlobalInterfaces, ItHasAClassObject) {
    IClassFactory* factory = nullptr;
    ASSERT_EQ(CoGetClassObject(CLSID_StdGlobalInterfaceTable, CLSCTX_INPROC_SERVER, nullptr,
                               IID_IClassFactory, reinterpret_cast<void**>(&factory)),
              S_OK);
    void* found = nullptr;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IGlobalInterfaceTable, &found), S_OK);
    EXPECT_EQ(found, table);
    factory->Release();
}

TEST_F(GlobalInterfaces, KeepsAnObjectUntilItIsRevoked) {
    DWORD cookie = 0;
    ASSERT_EQ(add(cookie), S_OK);
    EXPECT_NE(cookie, 0u);
    ULONG const kept = object.references;
    EXPECT_GT(kept, 0u);
    IUnknown* found = nullptr;
    EXPECT_EQ(get(cookie, found), S_OK);
    EXPECT_EQ(found, &object);
    EXPECT_EQ(get(cookie, found, IID_IClassFactory), S_OK) << "any of its interfaces";
    EXPECT_EQ(found, &object);
    EXPECT_EQ(get(cookie, found, IID_IDispatch), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(object.references, kept);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    EXPECT_EQ(object.references, 0u);
    EXPECT_EQ(get(cookie, found), E_INVALIDARG);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), E_INVALIDARG);
}

TEST_F(GlobalInterfaces, RegisteringTwiceGivesTwoCookies) {
    DWORD first = 0;
    DWORD second = 0;
    ASSERT_EQ(add(first), S_OK);
    ASSERT_EQ(add(second, IID_IClassFactory), S_OK);
    EXPECT_NE(first, second);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(first), S_OK);
    IUnknown* found = nullptr;
    EXPECT_EQ(get(second, found), S_OK);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(second), S_OK);
}

TEST_F(GlobalInterfaces, ACookieIsNotGivenOutAgainSoon) {
    std::set<DWORD> cookies;
    for (int time = 0; time < 200; ++time) {
        DWORD cookie = 0;
        ASSERT_EQ(add(cookie), S_OK);
        EXPECT_TRUE(cookies.insert(cookie).second) << cookie;
        EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    }
}

TEST_F(GlobalInterfaces, RefusesWhatItCannotUse) {
    DWORD cookie = 0;
    EXPECT_EQ(table->RegisterInterfaceInGlobal(nullptr, IID_IUnknown, &cookie), E_INVALIDARG);
    EXPECT_EQ(add(cookie, IID_IDispatch), E_NOINTERFACE);
    EXPECT_EQ(cookie, 0u);
    IUnknown* found = nullptr;
    for (DWORD const unknown : {DWORD{0}, unknownCookie}) {
        EXPECT_EQ(get(unknown, found), E_INVALIDARG) << unknown;
        EXPECT_EQ(table->RevokeInterfaceFromGlobal(unknown), E_INVALIDARG) << unknown;
    }
    ASSERT_EQ(add(cookie), S_OK);
    EXPECT_EQ(table->GetInterfaceFromGlobal(cookie, IID_IUnknown, nullptr), E_INVALIDARG);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
}

TEST_F(GlobalInterfaces, EveryThreadFindsTheObject) {
    constexpr int threadCount = 8, times = 2000;
    DWORD cookie = 0;
    ASSERT_EQ(add(cookie), S_OK);
    std::atomic<int> found{0};
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&] {
            ApartmentStay const own(COINIT_MULTITHREADED);
            for (int time = 0; time < times; ++time) {
                IUnknown* one = nullptr;
                if (get(cookie, one) == S_OK && one == &object) ++found;
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(found, threadCount * times);
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
}

}  // namespace
