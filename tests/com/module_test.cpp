#include "com/module.h"

#include <array>
#include <memory>
#include <thread>

#include "com/encoded_pointer.h"
#include "counting_unknown.h"
#include "support/start_gate.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

TEST_F(ModuleTest, GivesClassObjectsOfItsMapOnly) {
    struct Case {
        char const* name;
        CLSID const* classId;
        IID const* id;
        HRESULT expected;
    };
    Case const cases[] = {
        {"creatable", &recordedClass, &IID_IClassFactory, S_OK},
        {"as IUnknown", &recordedClass, &IID_IUnknown, S_OK},
        {"wrong interface", &recordedClass, &IID_IDispatch, E_NOINTERFACE},
        {"without class object", &hiddenClass, &IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
        {"unknown", &libraryOfTests, &IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
    };
    for (auto const& entry : cases) {
        void* out = &out;
        EXPECT_EQ(module.getClassObject(*entry.classId, *entry.id, &out), entry.expected)
            << entry.name;
        EXPECT_EQ(out != nullptr, SUCCEEDED(entry.expected)) << entry.name;
        ComPtr<IUnknown>(static_cast<IUnknown*>(out), adopt).reset();
        EXPECT_EQ(module.GetLockCount(), 0) << entry.name;
    }
    EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ModuleTest, TheCachedFactoryLocksOnlyWhileOthersHoldIt) {
    EXPECT_EQ(objects[1].cachedClassObject, 0U);
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(module.getClassObject(recordedClass, IID_IClassFactory, factory.putVoid()), S_OK);
    EXPECT_NE(objects[1].cachedClassObject, reinterpret_cast<std::uintptr_t>(factory.get()));
    EXPECT_EQ(module.GetLockCount(), 1);
    EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    ComPtr<IClassFactory> again;
    ASSERT_EQ(module.getClassObject(recordedClass, IID_IClassFactory, again.putVoid()), S_OK);
    EXPECT_EQ(factory, again);
    EXPECT_EQ(module.GetLockCount(), 1);
    again.reset();
    EXPECT_EQ(module.GetLockCount(), 1);
    factory.reset();
    EXPECT_EQ(module.GetLockCount(), 0);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST_F(ModuleTest, TheFactoryCreatesLocksAndRefuses) {
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(module.getClassObject(recordedClass, IID_IClassFactory, factory.putVoid()), S_OK);
    EXPECT_EQ(factory->LockServer(TRUE), S_OK);
    EXPECT_EQ(module.GetLockCount(), 2);
    EXPECT_EQ(factory->LockServer(FALSE), S_OK);
    EXPECT_EQ(module.GetLockCount(), 1);

    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    CountingUnknown outer;
    void* out = &out;
    EXPECT_EQ(factory->CreateInstance(&outer, recordedInterface, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    ComPtr<IRecorded> object;
    ASSERT_EQ(factory->CreateInstance(nullptr, recordedInterface, object.putVoid()), S_OK);
    EXPECT_EQ(object->answer(), 42);
    EXPECT_EQ(module.GetLockCount(), 2);
    object.reset();
    EXPECT_EQ(module.GetLockCount(), 1);
}

HRESULT refuseClassObject(InstanceMaker, REFIID, void** out) noexcept {
    *out = nullptr;
    return E_OUTOFMEMORY;
}

TEST_F(ModuleTest, AFailedClassObjectIsTriedAgain) {
    objects[1].makeClassObject = refuseClassObject;
    ComPtr<IUnknown> factory;
    EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, factory.putVoid()), E_OUTOFMEMORY);
    objects[1].makeClassObject = makeCachedClassFactory;
    EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, factory.putVoid()), S_OK);
}

TEST_F(ModuleTest, RacingCallersGetOneClassObject) {
    constexpr int rounds = 50;
    constexpr int callers = 4;
    std::array<ComPtr<IUnknown>, callers> found;
    for (int round = 0; round < rounds; ++round) {
        {
            ObjectMapEntry fresh[] = {
                {&recordedClass, 0, makeCachedClassFactory, createWithOrWithoutOuter<Recorded>}};
            ComModuleRecord raced(fresh);
            velk::test::StartGate start(callers);
            std::vector<std::thread> threads;
            for (auto& place : found) {
                threads.emplace_back([&] {
                    start.arriveAndWait();
                    raced.getClassObject(recordedClass, IID_IUnknown, place.putVoid());
                });
            }
            for (auto& thread : threads) thread.join();
            ASSERT_TRUE(found[0]);
            for (auto const& place : found) EXPECT_EQ(place, found[0]);
            EXPECT_EQ(module.GetLockCount(), 1);
            for (auto& place : found) place.reset();
            EXPECT_EQ(module.GetLockCount(), 0);
        }
    }
}

TEST_F(ModuleTest, CountsLocksOfManyThreads) {
    constexpr int threadCount = 4;
    constexpr int locks = 5000;
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(module.getClassObject(recordedClass, IID_IClassFactory, factory.putVoid()), S_OK);
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < locks; ++n) {
                factory->LockServer(TRUE);
                ComPtr<IClassFactory> const held = factory;
                factory->LockServer(FALSE);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(module.GetLockCount(), 1);
}

class ModuleEnd : public testing::Test {
  protected:
    static void note(void* text) noexcept { plan.events.push_back(static_cast<char const*>(text)); }
    static void hook(bool starting) noexcept { plan.events.push_back(starting ? "start" : "end"); }
};

TEST_F(ModuleEnd, RunsHooksThenTermFunctionsThenRefuses) {
    plan = {};
    static char first[] = "term 1";
    static char second[] = "term 2";
    ObjectMapEntry objects[] = {{&recordedClass, 0, makeCachedClassFactory,
                                 createWithOrWithoutOuter<Recorded>, nullptr, hook}};
    ComModuleRecord record(objects);
    EXPECT_EQ(currentModule(), nullptr);
    {
        TestModule module(record, libraryOfTests);
        EXPECT_EQ(currentModule(), &module);
        EXPECT_EQ(module.addTermFunction(note, first), S_OK);
        EXPECT_EQ(module.addTermFunction(note, second), S_OK);
        ComPtr<IUnknown> factory;
        EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, factory.putVoid()), S_OK);
    }
    EXPECT_EQ(plan.events, (Events{"start", "end", "term 2", "term 1"}));
    EXPECT_EQ(currentModule(), nullptr);
    EXPECT_NE(objects[0].cachedClassObject, 0U) << "the record gives the factory back later";
    void* out = &out;
    EXPECT_EQ(record.getClassObject(recordedClass, IID_IUnknown, &out), E_UNEXPECTED);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ModuleEnd, TheRecordGivesItsClassObjectsBack) {
    static CountingUnknown classObject;
    classObject.references = 0;
    auto const maker = [](InstanceMaker, REFIID id, void** out) noexcept {
        return classObject.QueryInterface(id, out);
    };
    ObjectMapEntry objects[] = {{&recordedClass, 0, maker, nullptr}};
    {
        ComModuleRecord record(objects);
        ComPtr<IUnknown> out;
        EXPECT_EQ(record.getClassObject(recordedClass, IID_IUnknown, out.putVoid()), S_OK);
        EXPECT_EQ(classObject.references, 2U);
        out.reset();
        EXPECT_EQ(classObject.references, 1U);
    }
    EXPECT_EQ(classObject.references, 0U);
}

TEST(EncodedPointer, ComesBackAndDoesNotShowThePointer) {
    int target = 0;
    EXPECT_EQ(decodePointer(encodePointer(&target)), &target);
    EXPECT_NE(encodePointer(&target), reinterpret_cast<std::uintptr_t>(&target));
    EXPECT_EQ(encodePointer(nullptr), 0U);
    EXPECT_EQ(decodePointer(0), nullptr);
}

}  // namespace
}  // namespace velk::com::test
