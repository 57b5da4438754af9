/// What a system that enforces apartments answers otherwise, or not at all, and
/// what ends a process under Wine.
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <oleauto.h>

#include "conformance/com/counted_object.h"
#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

struct GlobalInterfacesHere : testing::Test {
    ApartmentStay stay{COINIT_APARTMENTTHREADED};
    IGlobalInterfaceTable* table = nullptr;

    void SetUp() override {
        ASSERT_EQ(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                                   IID_IGlobalInterfaceTable, reinterpret_cast<void**>(&table)),
                  S_OK);
    }
};

/// Its answer to one interface revokes the cookie that it is found under.
class Impatient final : public IUnknown {
  public:
    IGlobalInterfaceTable* table = nullptr;
    DWORD cookie = 0;
    HRESULT revoked = E_FAIL;
    ULONG references = 0;
    ULONG referencesMeanwhile = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (riid == IID_IDispatch) {
            revoked = table->RevokeInterfaceFromGlobal(cookie);
            referencesMeanwhile = references;
        }
        bool const known = riid == IID_IUnknown;
        *object = known ? this : reinterpret_cast<void*>(0x20);
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
};

TEST_F(GlobalInterfacesHere, AnObjectMayRevokeItselfWhileItIsAsked) {
    Impatient object;
    object.table = table;
    ASSERT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &object.cookie), S_OK);
    void* found = nullptr;
    EXPECT_EQ(table->GetInterfaceFromGlobal(object.cookie, IID_IDispatch, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr) << "not what a failing object left there";
    EXPECT_EQ(object.revoked, S_OK);
    EXPECT_EQ(object.referencesMeanwhile, 1u) << "kept until the question is answered";
    EXPECT_EQ(object.references, 0u);
}

TEST_F(GlobalInterfacesHere, RefusesNullPointers) {
    CountedObject object;
    EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, nullptr), E_INVALIDARG);
    EXPECT_EQ(object.references, 0u);
}

TEST_F(GlobalInterfacesHere, ThreadsOutsideAnyApartmentMayOnlyRevoke) {
    CountedObject object;
    DWORD cookie = 0;
    ASSERT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &cookie), S_OK);
    std::thread([&] {
        DWORD another = 0;
        EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &another),
                  CO_E_NOTINITIALIZED);
        void* found = nullptr;
        EXPECT_EQ(table->GetInterfaceFromGlobal(cookie, IID_IUnknown, &found), CO_E_NOTINITIALIZED);
        EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    }).join();
    EXPECT_EQ(object.references, 0u);
}

/// Wine's table takes no lock for the whole of a lookup: there this ends the
/// process.
TEST_F(GlobalInterfacesHere, ThreadsLookUpWhileOthersRegisterAndRevoke) {
    constexpr int times = 200;
    CountedObject object;
    std::atomic<DWORD> shared{0};
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    auto const lookUp = [&] {
        ApartmentStay const own(COINIT_MULTITHREADED);
        while (!done) {
            IUnknown* one = nullptr;
            HRESULT const result =
                table->GetInterfaceFromGlobal(shared, IID_IUnknown, reinterpret_cast<void**>(&one));
            if (result == S_OK ? one != &object : result != E_INVALIDARG) ++wrong;
            if (one != nullptr) one->Release();
        }
    };
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; ++number) threads.emplace_back(lookUp);
    for (int time = 0; time < times; ++time) {
        DWORD cookie = 0;
        if (table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &cookie) != S_OK) ++wrong;
        shared = cookie;
        std::this_thread::yield();
        if (table->RevokeInterfaceFromGlobal(cookie) != S_OK) ++wrong;
    }
    done = true;
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(object.references, 0u);
}

}  // namespace
