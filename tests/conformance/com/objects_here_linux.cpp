/// What the layer decides where the published text leaves a choice, what a system
/// that enforces apartments answers otherwise, and what ends a process elsewhere.
#include <atomic>

#include <gtest/gtest.h>
#include <oleauto.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

TEST(ClassObjectsHere, ASuccessWithoutObjectIsAFailure) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    RegisteredClass const registered(emptySuccessClass, serverPath(OLESTR("velktest_classes")));
    Found object;
    EXPECT_EQ(create(emptySuccessClass, object), E_NOINTERFACE);
    EXPECT_EQ(object.get(), nullptr);
    EXPECT_EQ(create(emptySuccessClass, object, nullptr, 0), E_INVALIDARG) << "in no context";
}

TEST(ClassObjectsHere, TheUsersClassGoesFirst) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    RegisteredClass const machine(plainClass, OLESTR("/nowhere/machine.so"));
    Found object;
    EXPECT_EQ(create(plainClass, object), HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND));
    RegisteredClass const user(plainClass, serverPath(OLESTR("velktest_classes")), OLESTR("Both"),
                               HKEY_CURRENT_USER);
    EXPECT_EQ(create(plainClass, object), S_OK);
}

TEST(ClassObjectsHere, ReservedArgumentsMustBeAbsent) {
    EXPECT_EQ(CoInitializeEx(reinterpret_cast<void*>(1), 0), E_INVALIDARG);
    EXPECT_EQ(CoInitializeEx(nullptr, 0x100), E_INVALIDARG);
}

struct GlobalInterfacesHere : testing::Test {
    ApartmentStay stay{COINIT_APARTMENTTHREADED};
    Found made;
    IGlobalInterfaceTable* table = nullptr;
    CountedObject object;
    DWORD cookie = 0;

    void SetUp() override {
        ASSERT_EQ(create(CLSID_StdGlobalInterfaceTable, made, nullptr, CLSCTX_INPROC_SERVER,
                         IID_IGlobalInterfaceTable),
                  S_OK);
        table = made.as<IGlobalInterfaceTable>();
    }
    void TearDown() override { EXPECT_EQ(object.references, 0u); }
};

/// Its answer to one interface revokes the cookie that it is found under.
struct Impatient final : CountedObject {
    IGlobalInterfaceTable* table = nullptr;
    DWORD cookie = 0;
    HRESULT revoked = E_FAIL;
    ULONG referencesMeanwhile = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (riid == IID_IDispatch) {
            revoked = table->RevokeInterfaceFromGlobal(cookie);
            referencesMeanwhile = references;
        }
        return CountedObject::QueryInterface(riid, object);
    }
};

TEST_F(GlobalInterfacesHere, AnObjectMayRevokeItselfWhileItIsAsked) {
    Impatient impatient;
    impatient.table = table;
    ASSERT_EQ(table->RegisterInterfaceInGlobal(&impatient, IID_IUnknown, &impatient.cookie), S_OK);
    Found found;
    EXPECT_EQ(table->GetInterfaceFromGlobal(impatient.cookie, IID_IDispatch, found.place()),
              E_NOINTERFACE);
    EXPECT_EQ(found.get(), nullptr) << "not what a failing object left there";
    EXPECT_EQ(impatient.revoked, S_OK);
    EXPECT_EQ(impatient.referencesMeanwhile, 1u) << "kept until the question is answered";
    EXPECT_EQ(impatient.references, 0u);
}

TEST_F(GlobalInterfacesHere, ThreadsOutsideAnyApartmentMayOnlyRevoke) {
    EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, nullptr), E_INVALIDARG);
    ASSERT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &cookie), S_OK);
    onThreads(1, [&](int) {
        DWORD another = 0;
        EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &another),
                  CO_E_NOTINITIALIZED);
        Found found;
        EXPECT_EQ(table->GetInterfaceFromGlobal(cookie, IID_IUnknown, found.place()),
                  CO_E_NOTINITIALIZED);
        EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    });
}

/// Wine's table takes no lock for the whole of a lookup: there this ends the
/// process.
TEST_F(GlobalInterfacesHere, ThreadsLookUpWhileOthersRegisterAndRevoke) {
    std::atomic<DWORD> shared{0};
    std::atomic<bool> done{false};
    std::atomic<int> wrong{0};
    onThreads(4, [&](int number) {
        ApartmentStay const own(COINIT_MULTITHREADED);
        while (number != 0 && !done) {
            Found one;
            HRESULT const result = table->GetInterfaceFromGlobal(shared, IID_IUnknown, one.place());
            if (result == S_OK ? one.get() != &object : result != E_INVALIDARG) ++wrong;
        }
        for (int time = 0; number == 0 && time < 200; ++time) {
            if (table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &cookie) != S_OK) ++wrong;
            shared = cookie;
            std::this_thread::yield();
            if (table->RevokeInterfaceFromGlobal(cookie) != S_OK) ++wrong;
        }
        if (number == 0) done = true;
    });
    EXPECT_EQ(wrong, 0);
}

/// Elsewhere a weak registration holds a stub, for objects of other processes.
TEST(ActiveObjectsHere, ThreadsFindOnlyObjectsThatAreThere) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    std::atomic<bool> done{false};
    onThreads(4, [&](int number) {
        while (number != 0 && !done) {
            Found found;
            GetActiveObject(plainClass, nullptr, found.place<IUnknown>());
        }
        for (int time = 0; number == 0 && time < 500; ++time) {
            DWORD registration = 0;
            CountedObject object;
            EXPECT_EQ(RegisterActiveObject(&object, plainClass, ACTIVEOBJECT_WEAK, &registration),
                      S_OK);
            EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
            // Whoever found it still has a reference; nobody can add another one.
            while (object.references != 0) std::this_thread::yield();
        }
        if (number == 0) done = true;
    });
    CountedObject object;
    DWORD registration = 0;
    ASSERT_EQ(RegisterActiveObject(&object, plainClass, ACTIVEOBJECT_WEAK, &registration), S_OK);
    EXPECT_EQ(object.references, 0u) << "a weak one holds none";
    EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
}

}  // namespace
