#include <gtest/gtest.h>

#include <windows.h>

#include <oleauto.h>

#include "conformance/com/counted_object.h"
#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

/// A class that nobody else has, in the multi-threaded apartment.
struct ActiveObjects : testing::Test {
    ApartmentStay stay{COINIT_MULTITHREADED};
    CLSID id{};
    CountedObject object;

    void SetUp() override { ASSERT_EQ(CoCreateGuid(&id), S_OK); }
    void TearDown() override { EXPECT_EQ(object.references, 0u); }

    /// The answer for the class; an object that it gives is given back.
    HRESULT get(IUnknown*& found) {
        found = reinterpret_cast<IUnknown*>(0x20);
        HRESULT const result = GetActiveObject(id, nullptr, &found);
        if (SUCCEEDED(result)) found->Release();
        return result;
    }
    void expectNone() {
        IUnknown* found = nullptr;
        EXPECT_EQ(get(found), MK_E_UNAVAILABLE);
        EXPECT_EQ(found, nullptr);
    }
};

TEST_F(ActiveObjects, IsFoundUntilItIsRevoked) {
    expectNone();
    for (DWORD const flags : {ACTIVEOBJECT_STRONG, ACTIVEOBJECT_WEAK}) {
        DWORD registration = 0;
        ASSERT_EQ(RegisterActiveObject(&object, id, flags, &registration), S_OK) << flags;
        EXPECT_NE(registration, 0u);
        IUnknown* found = nullptr;
        EXPECT_EQ(get(found), S_OK) << flags;
        EXPECT_EQ(found, &object) << flags;
        EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK) << flags;
        EXPECT_EQ(object.references, 0u) << flags;
        EXPECT_EQ(RevokeActiveObject(registration, nullptr), E_INVALIDARG) << flags;
        expectNone();
    }
}

TEST_F(ActiveObjects, AStrongRegistrationHoldsTheObject) {
    DWORD registration = 0;
    ASSERT_EQ(RegisterActiveObject(&object, id, ACTIVEOBJECT_STRONG, &registration), S_OK);
    EXPECT_GT(object.references, 0u);
    EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
}

TEST_F(ActiveObjects, TheFirstOneIsFoundAndTheOthersWait) {
    CountedObject later;
    DWORD first = 0;
    DWORD second = 0;
    ASSERT_EQ(RegisterActiveObject(&object, id, ACTIVEOBJECT_STRONG, &first), S_OK);
    ASSERT_EQ(RegisterActiveObject(&later, id, ACTIVEOBJECT_STRONG, &second),
              MK_S_MONIKERALREADYREGISTERED);
    EXPECT_NE(first, second);
    IUnknown* found = nullptr;
    EXPECT_EQ(get(found), S_OK);
    EXPECT_EQ(found, &object);
    EXPECT_EQ(RevokeActiveObject(first, nullptr), S_OK);
    EXPECT_EQ(get(found), S_OK);
    EXPECT_EQ(found, &later);
    EXPECT_EQ(RevokeActiveObject(second, nullptr), S_OK);
    EXPECT_EQ(later.references, 0u);
    expectNone();
}

TEST_F(ActiveObjects, RefusesWhatItCannotUse) {
    DWORD registration = 0;
    EXPECT_EQ(RegisterActiveObject(nullptr, id, ACTIVEOBJECT_STRONG, &registration), E_INVALIDARG);
    EXPECT_EQ(RegisterActiveObject(&object, id, ACTIVEOBJECT_STRONG, nullptr), E_INVALIDARG);
    EXPECT_EQ(GetActiveObject(id, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(RevokeActiveObject(0, nullptr), E_INVALIDARG);
    expectNone();
}

TEST(ActiveObjectsOutside, NeedAnApartment) {
    CountedObject object;
    DWORD registration = 0;
    EXPECT_EQ(RegisterActiveObject(&object, CLSID_NULL, ACTIVEOBJECT_STRONG, &registration),
              CO_E_NOTINITIALIZED);
    IUnknown* found = nullptr;
    EXPECT_EQ(GetActiveObject(CLSID_NULL, nullptr, &found), CO_E_NOTINITIALIZED);
    EXPECT_EQ(object.references, 0u);
}

}  // namespace
