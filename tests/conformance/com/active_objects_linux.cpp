/// Weak registrations, which hold a stub where objects live in other processes.
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <oleauto.h>

#include "conformance/com/counted_object.h"
#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

TEST(ActiveObjectsHere, AWeakRegistrationHoldsNoReference) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    CountedObject object;
    DWORD registration = 0;
    ASSERT_EQ(RegisterActiveObject(&object, plainClass, ACTIVEOBJECT_WEAK, &registration), S_OK);
    EXPECT_EQ(object.references, 0u);
    EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
}

TEST(ActiveObjectsHere, ThreadsFindOnlyObjectsThatAreThere) {
    ApartmentStay const stay(COINIT_MULTITHREADED);
    std::atomic<bool> done{false};
    std::vector<std::thread> threads;
    for (int number = 0; number < 3; ++number) {
        threads.emplace_back([&] {
            while (!done) {
                IUnknown* found = nullptr;
                if (SUCCEEDED(GetActiveObject(plainClass, nullptr, &found))) found->Release();
            }
        });
    }
    for (int time = 0; time < 500; ++time) {
        DWORD registration = 0;
        CountedObject object;
        EXPECT_EQ(RegisterActiveObject(&object, plainClass, ACTIVEOBJECT_WEAK, &registration),
                  S_OK);
        EXPECT_EQ(RevokeActiveObject(registration, nullptr), S_OK);
        // Whoever found it still has a reference; nobody can add another one.
        while (object.references != 0) std::this_thread::yield();
    }
    done = true;
    for (auto& thread : threads) thread.join();
}

}  // namespace
