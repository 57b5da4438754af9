#include <atomic>
#include <memory>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

// Programs that include objbase.h alone expect the property sets with it.
static_assert(PIDSI_TITLE == 2 && sizeof(PROPVARIANT) >= sizeof(VARTYPE));

namespace {

using namespace velk::test;

/// The classes of the test server, registered for the machine.
struct ClassObjects : testing::Test {
    Text const path = serverPath(OLESTR("velktest_classes"));
    RegisteredClass plain{plainClass, path};
    RegisteredClass lonely{lonelyClass, path};
    RegisteredClass failing{failingClass, path};
    RegisteredClass unknown{unknownClass, path};
    RegisteredClass empty{emptySuccessClass, path};
    ApartmentStay stay{COINIT_APARTMENTTHREADED};

    bool isLoaded() { return GetModuleHandleW(path.c_str()) != nullptr; }
};

TEST_F(ClassObjects, MakeObjectsOrTellWhyNot) {
    CLSID const unregistered = {0x4D0E5F10, 0, 0, {}};
    CountedObject outer;
    struct Case {
        char const* what;
        CLSID id;
        HRESULT expected;
        DWORD context = CLSCTX_INPROC_SERVER;
        IID riid = IID_IUnknown;
        IUnknown* outer = nullptr;
    };
    Found object;
    for (auto const& each : {
             Case{"a class", plainClass, S_OK},
             {"not registered", unregistered, REGDB_E_CLASSNOTREG},
             {"in every context", unregistered, REGDB_E_CLASSNOTREG, CLSCTX_ALL},
             {"out of process only", plainClass, REGDB_E_CLASSNOTREG, CLSCTX_LOCAL_SERVER},
             {"module does not know it", unknownClass, CLASS_E_CLASSNOTAVAILABLE},
             {"module fails", failingClass, E_UNEXPECTED},
             {"another interface", plainClass, E_NOINTERFACE, CLSCTX_INPROC_SERVER, plainClass},
             {"as a part", plainClass, S_OK, CLSCTX_INPROC_SERVER, IID_IUnknown, &outer},
             {"as a part that is not asked for its own", plainClass, CLASS_E_NOAGGREGATION,
              CLSCTX_INPROC_SERVER, IID_IClassFactory, &outer},
             {"as a part that it cannot be", lonelyClass, CLASS_E_NOAGGREGATION,
              CLSCTX_INPROC_SERVER, IID_IUnknown, &outer},
         }) {
        EXPECT_EQ(create(each.id, object, each.outer, each.context, each.riid), each.expected)
            << each.what;
        EXPECT_EQ(object.get() != nullptr, each.expected == S_OK) << each.what;
    }
    EXPECT_TRUE(FAILED(create(plainClass, object, nullptr, 0))) << "in no context";
    EXPECT_EQ(CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr),
              E_POINTER);
    EXPECT_EQ(CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, nullptr),
              E_INVALIDARG);
}

TEST_F(ClassObjects, AnIdleModuleGoesAndABusyOneStays) {
    Found object, first, second;
    ASSERT_EQ(create(plainClass, object), S_OK);
    int tornDown = 0;
    auto const setCounter = reinterpret_cast<SetTearDownCounter>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(path.c_str()), "SetTearDownCounterHere")));
    ASSERT_NE(setCounter, nullptr);
    setCounter(&tornDown);
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded()) << "an object of the module is alive";

    auto const classObject = [](DWORD context, Found& found) {
        return CoGetClassObject(plainClass, context, nullptr, IID_IClassFactory, found.place());
    };
    ASSERT_EQ(classObject(CLSCTX_INPROC_SERVER, first), S_OK);
    ASSERT_EQ(classObject(CLSCTX_ALL, second), S_OK);
    EXPECT_EQ(first.get(), second.get()) << "one for every caller";
    object.place();
    first.as<IClassFactory>()->LockServer(TRUE);
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded()) << "the module is locked";
    EXPECT_EQ(tornDown, 0);
    first.as<IClassFactory>()->LockServer(FALSE);
    first.place(), second.place();
    CoFreeUnusedLibraries();
    EXPECT_FALSE(isLoaded());
    EXPECT_EQ(tornDown, 1) << "its static objects are destroyed";
    EXPECT_EQ(create(plainClass, object), S_OK) << "it can be loaded again";
}

TEST_F(ClassObjects, TheEndOfComUnloadsTheModules) {
    ASSERT_EQ(create(plainClass, *std::make_unique<Found>()), S_OK);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    CoUninitialize();
    EXPECT_TRUE(isLoaded()) << "the thread is still inside";
    CoUninitialize();
    EXPECT_FALSE(isLoaded());
    // For the stay of the fixture.
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

TEST_F(ClassObjects, AModuleThatOthersMayBeInStaysForAWhile) {
    // By an expandable path.
    RegisteredClass const again(plainClass, path, OLESTR("Both"), HKEY_LOCAL_MACHINE,
                                REG_EXPAND_SZ);
    ASSERT_EQ(create(plainClass, *std::make_unique<Found>()), S_OK);
    CoFreeUnusedLibraries();
    EXPECT_TRUE(isLoaded());
}

TEST_F(ClassObjects, ThreadsMakeAndFreeAtTheSameTime) {
    // Every thread makes its own: how a system carries objects from one
    // apartment to another is not in question here.
    RegisteredClass const again(plainClass, path, OLESTR("Both"));
    std::atomic<HRESULT> failure{S_OK};
    onThreads(4, [&](int number) {
        ApartmentStay const own(number % 2 == 0 ? COINIT_MULTITHREADED : COINIT_APARTMENTTHREADED);
        for (int time = 0; time < 100; ++time) {
            Found object;
            HRESULT const result = create(plainClass, object);
            if (FAILED(result)) failure = result;
            CoFreeUnusedLibraries();
        }
    });
    EXPECT_EQ(failure, S_OK);
}

constexpr DWORD single = COINIT_APARTMENTTHREADED, multi = COINIT_MULTITHREADED;

TEST(Apartments, EntriesAreCounted) {
    struct Step {
        DWORD flags;
        HRESULT expected;
    };
    std::vector<std::vector<Step>> const runs = {
        {{single, S_OK}, {single, S_FALSE}, {single | COINIT_DISABLE_OLE1DDE, S_FALSE}},
        {{multi, S_OK}, {multi, S_FALSE}, {multi | COINIT_SPEED_OVER_MEMORY, S_FALSE}},
        {{single, S_OK}, {multi, RPC_E_CHANGED_MODE}, {single, S_FALSE}},
        {{multi, S_OK}, {single, RPC_E_CHANGED_MODE}, {multi, S_FALSE}},
    };
    for (auto const& run : runs) {
        // On a thread of its own, outside any apartment.
        onThreads(1, [&](int) {
            CoUninitialize();
            int entries = 0;
            for (auto const& step : run) {
                HRESULT const result = CoInitializeEx(nullptr, step.flags);
                EXPECT_EQ(result, step.expected) << "flags " << step.flags;
                if (SUCCEEDED(result)) ++entries;
            }
            for (; entries > 0; --entries) {
                EXPECT_EQ(classesHere(), REGDB_E_CLASSNOTREG) << entries << " entries are left";
                CoUninitialize();
            }
            for (int time = 0; time < 3; ++time) CoUninitialize();
            EXPECT_EQ(classesHere(), CO_E_NOTINITIALIZED);
        });
    }
}

TEST(Apartments, TheMultiThreadedOneIsEveryThreads) {
    onThreads(1, [](int) {
        ApartmentStay const own(single);
        onThreads(1, [](int) {
            EXPECT_EQ(classesHere(), CO_E_NOTINITIALIZED) << "another thread's is not shared";
            ApartmentStay const shared(multi);
            onThreads(1, [](int) {
                EXPECT_EQ(classesHere(), REGDB_E_CLASSNOTREG) << "a guest";
                EXPECT_EQ(ApartmentStay(single).result(), S_OK) << "may still enter its own";
            });
        });
        onThreads(1, [](int) { EXPECT_EQ(classesHere(), CO_E_NOTINITIALIZED); });
    });
}

}  // namespace
