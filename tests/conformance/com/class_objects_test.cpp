#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "conformance/com/test_classes.h"

namespace {

using namespace velk::test;

/// The classes of the test server, registered for the machine.
struct ClassObjects : testing::Test {
    Text const path = serverPath(OLESTR("velktest_classes"));
    RegisteredClass plain{plainClass, path};
    RegisteredClass lonely{lonelyClass, path};
    RegisteredClass emptySuccess{emptySuccessClass, path};
    RegisteredClass failing{failingClass, path};
    RegisteredClass unknown{unknownClass, path};
    ApartmentStay stay{COINIT_APARTMENTTHREADED};

    HRESULT create(REFCLSID id, IUnknown*& object, IUnknown* outer = nullptr,
                   DWORD context = CLSCTX_INPROC_SERVER, REFIID riid = IID_IUnknown) {
        object = reinterpret_cast<IUnknown*>(0x20);
        return CoCreateInstance(id, outer, context, riid, reinterpret_cast<void**>(&object));
    }
    bool isLoaded() { return GetModuleHandleW(path.c_str()) != nullptr; }
};

/// An outer object, for the aggregation cases.
struct Outer : IUnknown {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

TEST_F(ClassObjects, AnInstanceIsMade) {
    IUnknown* object = nullptr;
    ASSERT_EQ(create(plainClass, object), S_OK);
    ASSERT_NE(object, nullptr);
    EXPECT_TRUE(isLoaded());
    EXPECT_EQ(object->Release(), 0u);
}

TEST_F(ClassObjects, FailuresHaveTheirCodesAndNoObject) {
    CLSID const unregistered = {0x4D0E5F10, 0, 0, {}};
    struct Case {
        char const* what;
        CLSID id;
        DWORD context;
        HRESULT expected;
    };
    Case const cases[] = {
        {"not registered", unregistered, CLSCTX_INPROC_SERVER, REGDB_E_CLASSNOTREG},
        {"every context", unregistered, CLSCTX_ALL, REGDB_E_CLASSNOTREG},
        {"out of process only", plainClass, CLSCTX_LOCAL_SERVER, REGDB_E_CLASSNOTREG},
        {"module does not know it", unknownClass, CLSCTX_INPROC_SERVER, CLASS_E_CLASSNOTAVAILABLE},
        {"module fails", failingClass, CLSCTX_INPROC_SERVER, E_UNEXPECTED},
    };
    for (auto const& entry : cases) {
        IUnknown* object = nullptr;
        EXPECT_EQ(create(entry.id, object, nullptr, entry.context), entry.expected) << entry.what;
        EXPECT_EQ(object, nullptr) << entry.what;
    }
    IUnknown* object = nullptr;
    EXPECT_EQ(create(plainClass, object, nullptr, CLSCTX_INPROC_SERVER, plainClass), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_TRUE(FAILED(create(plainClass, object, nullptr, 0)));
    EXPECT_EQ(object, nullptr);
}

TEST_F(ClassObjects, NullTargetsAreRefused) {
    EXPECT_EQ(CoCreateInstance(plainClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, nullptr),
              E_POINTER);
    EXPECT_EQ(CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IUnknown, nullptr),
              E_INVALIDARG);
}

TEST_F(ClassObjects, AggregationAsksForTheOwnUnknown) {
    Outer outer;
    IUnknown* object = nullptr;
    ASSERT_EQ(create(plainClass, object, &outer), S_OK);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(create(plainClass, object, &outer, CLSCTX_INPROC_SERVER, IID_IClassFactory),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(create(lonelyClass, object, &outer), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(object, nullptr);
}

TEST_F(ClassObjects, OneClassObjectForEveryCaller) {
    IClassFactory* first = nullptr;
    IClassFactory* second = nullptr;
    ASSERT_EQ(CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                               reinterpret_cast<void**>(&first)),
              S_OK);
    ASSERT_EQ(CoGetClassObject(plainClass, CLSCTX_ALL, nullptr, IID_IClassFactory,
                               reinterpret_cast<void**>(&second)),
              S_OK);
    EXPECT_EQ(first, second);
    first->Release();
    second->Release();
}

TEST_F(ClassObjects, AnIdleModuleGoesAndABusyOneStays) {
    IUnknown* object = nullptr;
    ASSERT_EQ(create(plainClass, object), S_OK);
    int tornDown = 0;
    auto const setCounter = reinterpret_cast<SetTearDownCounter>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(path.c_str()), "SetTearDownCounterHere")));
    ASSERT_NE(setCounter, nullptr);
    setCounter(&tornDown);

    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_TRUE(isLoaded()) << "an object of the module is alive";
    EXPECT_EQ(tornDown, 0);
    object->Release();
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_FALSE(isLoaded());
    EXPECT_EQ(tornDown, 1) << "its static objects are destroyed";

    ASSERT_EQ(create(plainClass, object), S_OK) << "it can be loaded again";
    object->Release();
}

TEST_F(ClassObjects, ALockedModuleStays) {
    IClassFactory* factory = nullptr;
    ASSERT_EQ(CoGetClassObject(plainClass, CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                               reinterpret_cast<void**>(&factory)),
              S_OK);
    factory->LockServer(TRUE);
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_TRUE(isLoaded());
    factory->LockServer(FALSE);
    factory->Release();
}

TEST_F(ClassObjects, TheEndOfComUnloadsTheModules) {
    IUnknown* object = nullptr;
    ASSERT_EQ(create(plainClass, object), S_OK);
    object->Release();
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    CoUninitialize();
    EXPECT_TRUE(isLoaded()) << "the thread is still inside";
    CoUninitialize();
    EXPECT_FALSE(isLoaded());
    // For the stay of the fixture.
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
}

TEST_F(ClassObjects, AnExpandablePathIsExpanded) {
    RegisteredClass const again(plainClass, path, OLESTR("Both"), HKEY_LOCAL_MACHINE,
                                REG_EXPAND_SZ);
    IUnknown* object = nullptr;
    ASSERT_EQ(create(plainClass, object), S_OK);
    object->Release();
}

TEST_F(ClassObjects, ThreadsMakeAndFreeAtTheSameTime) {
    // Every thread makes its own: how a system carries objects from one
    // apartment to another is not in question here.
    RegisteredClass const again(plainClass, path, OLESTR("Both"));
    std::atomic<int> made{0};
    std::atomic<HRESULT> failure{S_OK};
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&, number] {
            ApartmentStay const own(number % 2 == 0 ? COINIT_MULTITHREADED
                                                    : COINIT_APARTMENTTHREADED);
            for (int time = 0; time < 100; ++time) {
                IUnknown* object = nullptr;
                HRESULT const result = create(plainClass, object);
                if (SUCCEEDED(result)) {
                    ++made;
                    object->Release();
                } else {
                    failure = result;
                }
                CoFreeUnusedLibraries();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(failure, S_OK);
    EXPECT_EQ(made, 400);
}

}  // namespace
