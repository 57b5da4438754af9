/// Objects that are found under cookies and classes: the table of global
/// interfaces, and active objects.
#include <atomic>
#include <set>

#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include "conformance/com/test_classes.h"
#include "support/expected_difference.h"

namespace {

using namespace velk::test;

/// The table, in the multi-threaded apartment: every thread may use the
/// registered objects directly.
struct GlobalInterfaces : testing::Test {
    ApartmentStay stay{COINIT_MULTITHREADED};
    Found made;
    IGlobalInterfaceTable* table = nullptr;
    CountedObject object;

    static HRESULT makeTable(Found& found, REFIID riid, DWORD context = CLSCTX_INPROC_SERVER,
                             IUnknown* outer = nullptr) {
        return create(CLSID_StdGlobalInterfaceTable, found, outer, context, riid);
    }
    void SetUp() override {
        ASSERT_EQ(makeTable(made, IID_IGlobalInterfaceTable), S_OK);
        table = made.as<IGlobalInterfaceTable>();
    }
    void TearDown() override { EXPECT_EQ(object.references, 0u); }
    DWORD add(REFIID riid = IID_IUnknown) {
        DWORD cookie = 0;
        EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, riid, &cookie), S_OK);
        EXPECT_NE(cookie, 0u);
        return cookie;
    }
    HRESULT get(DWORD cookie, Found& found, REFIID riid = IID_IUnknown) {
        return table->GetInterfaceFromGlobal(cookie, riid, found.place());
    }
    HRESULT revoke(DWORD cookie) { return table->RevokeInterfaceFromGlobal(cookie); }
};

TEST_F(GlobalInterfaces, AreInOneTable) {
    struct Case {
        char const* what;
        IID id;
        DWORD context;
        HRESULT expected;
    };
    Found found;
    for (auto const& each : {
             Case{"the table", IID_IGlobalInterfaceTable, CLSCTX_INPROC_SERVER, S_OK},
             Case{"its identity", IID_IUnknown, CLSCTX_ALL, S_OK},
             Case{"another interface", IID_IDispatch, CLSCTX_INPROC_SERVER, E_NOINTERFACE},
             Case{"another process", IID_IUnknown, CLSCTX_LOCAL_SERVER, REGDB_E_CLASSNOTREG},
         }) {
        EXPECT_EQ(makeTable(found, each.id, each.context), each.expected) << each.what;
        EXPECT_EQ(found.get(), SUCCEEDED(each.expected) ? table : nullptr) << each.what;
    }
    expectDifference("interface-table-aggregation", [&] {
        EXPECT_EQ(makeTable(found, IID_IUnknown, CLSCTX_INPROC_SERVER, &object),
                  CLASS_E_NOAGGREGATION);
    });
    Found factory;
    ASSERT_EQ(CoGetClassObject(CLSID_StdGlobalInterfaceTable, CLSCTX_INPROC_SERVER, nullptr,
                               IID_IClassFactory, factory.place()),
              S_OK);
    EXPECT_EQ(factory.as<IClassFactory>()->CreateInstance(nullptr, IID_IGlobalInterfaceTable,
                                                          found.place()),
              S_OK);
    EXPECT_EQ(found.get(), table);
}

TEST_F(GlobalInterfaces, KeepAnObjectUntilItIsRevoked) {
    std::set<DWORD> cookies;
    for (int time = 0; time < 200; ++time) {
        DWORD const cookie = add(), other = add(IID_IClassFactory);
        EXPECT_TRUE(cookies.insert(cookie).second && cookies.insert(other).second)
            << "a cookie is not given out again soon";
        ULONG const kept = object.references;
        EXPECT_GT(kept, 0u);
        {
            Found found;
            EXPECT_EQ(get(cookie, found), S_OK);
            EXPECT_EQ(found.get(), &object);
            EXPECT_EQ(get(cookie, found, IID_IClassFactory), S_OK) << "any of its interfaces";
            EXPECT_EQ(found.get(), &object);
            EXPECT_EQ(get(cookie, found, IID_IDispatch), E_NOINTERFACE);
            EXPECT_EQ(found.get(), nullptr);
            EXPECT_EQ(object.references, kept);
            EXPECT_EQ(revoke(cookie), S_OK);
            EXPECT_EQ(get(cookie, found), E_INVALIDARG);
            EXPECT_EQ(get(other, found), S_OK) << "is another registration";
        }
        EXPECT_EQ(revoke(cookie), E_INVALIDARG);
        EXPECT_EQ(revoke(other), S_OK);
        EXPECT_EQ(object.references, 0u);
    }
}

TEST_F(GlobalInterfaces, RefuseWhatTheyCannotUse) {
    DWORD cookie = 0;
    EXPECT_EQ(table->RegisterInterfaceInGlobal(nullptr, IID_IUnknown, &cookie), E_INVALIDARG);
    EXPECT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IDispatch, &cookie), E_NOINTERFACE);
    EXPECT_EQ(cookie, 0u);
    Found found;
    for (DWORD const unknown : {0x0U, 0x7FFF0000U}) {
        EXPECT_EQ(get(unknown, found), E_INVALIDARG) << unknown;
        EXPECT_EQ(revoke(unknown), E_INVALIDARG) << unknown;
    }
    cookie = add();
    EXPECT_EQ(table->GetInterfaceFromGlobal(cookie, IID_IUnknown, nullptr), E_INVALIDARG);
    EXPECT_EQ(revoke(cookie), S_OK);
}

TEST_F(GlobalInterfaces, AreFoundByEveryThread) {
    DWORD const cookie = add();
    std::atomic<int> wrong{0};
    onThreads(8, [&](int) {
        ApartmentStay const own(COINIT_MULTITHREADED);
        for (int time = 0; time < 2000; ++time) {
            Found one;
            if (get(cookie, one) != S_OK || one.get() != &object) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(revoke(cookie), S_OK);
}

/// A class that nobody else has, in the multi-threaded apartment.
struct ActiveObjects : testing::Test {
    ApartmentStay stay{COINIT_MULTITHREADED};
    CLSID id{};
    CountedObject object, later;

    void SetUp() override { ASSERT_EQ(CoCreateGuid(&id), S_OK); }
    void TearDown() override {
        expectFound(nullptr);
        EXPECT_EQ(object.references + later.references, 0u);
    }
    void expectFound(IUnknown* expected) {
        Found found;
        EXPECT_EQ(GetActiveObject(id, nullptr, found.place<IUnknown>()),
                  expected != nullptr ? S_OK : MK_E_UNAVAILABLE);
        EXPECT_EQ(found.get(), expected);
    }
};

TEST_F(ActiveObjects, AreFoundUntilTheyAreRevoked) {
    expectFound(nullptr);
    for (DWORD const flags : {ACTIVEOBJECT_STRONG, ACTIVEOBJECT_WEAK}) {
        DWORD first = 0, second = 0;
        ASSERT_EQ(RegisterActiveObject(&object, id, flags, &first), S_OK) << flags;
        EXPECT_NE(first, 0u);
        EXPECT_TRUE(flags == ACTIVEOBJECT_WEAK || object.references > 0u);
        ASSERT_EQ(RegisterActiveObject(&later, id, flags, &second), MK_S_MONIKERALREADYREGISTERED);
        EXPECT_NE(first, second);
        expectFound(&object);
        EXPECT_EQ(RevokeActiveObject(first, nullptr), S_OK) << flags;
        EXPECT_EQ(RevokeActiveObject(first, nullptr), E_INVALIDARG) << flags;
        expectFound(&later);
        EXPECT_EQ(RevokeActiveObject(second, nullptr), S_OK) << flags;
    }
}

TEST_F(ActiveObjects, RefuseWhatTheyCannotUse) {
    DWORD registration = 0;
    EXPECT_EQ(RegisterActiveObject(nullptr, id, ACTIVEOBJECT_STRONG, &registration), E_INVALIDARG);
    EXPECT_EQ(RegisterActiveObject(&object, id, ACTIVEOBJECT_STRONG, nullptr), E_INVALIDARG);
    EXPECT_EQ(GetActiveObject(id, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(RevokeActiveObject(0, nullptr), E_INVALIDARG);
}

TEST(ActiveObjectsOutside, NeedAnApartment) {
    CountedObject object;
    DWORD registration = 0;
    Found found;
    EXPECT_EQ(RegisterActiveObject(&object, CLSID_NULL, ACTIVEOBJECT_STRONG, &registration),
              CO_E_NOTINITIALIZED);
    EXPECT_EQ(GetActiveObject(CLSID_NULL, nullptr, found.place<IUnknown>()), CO_E_NOTINITIALIZED);
    EXPECT_EQ(object.references, 0u);
}

}  // namespace
