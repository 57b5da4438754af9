#include "com/module.h"

#include "com/encoded_pointer.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

TEST_F(ModuleTest, GivesClassObjectsOfItsMapOnly) {
    struct Case {
        CLSID const& classId;
        IID const& id;
        HRESULT expected;
    };
    for (auto const& [classId, id, expected] :
         {Case{recordedClass, IID_IClassFactory, S_OK}, Case{recordedClass, IID_IUnknown, S_OK},
          Case{recordedClass, IID_IDispatch, E_NOINTERFACE},
          Case{hiddenClass, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE},
          Case{libraryOfTests, IID_IClassFactory, CLASS_E_CLASSNOTAVAILABLE}}) {
        void* out = &out;
        EXPECT_EQ(module.getClassObject(classId, id, &out), expected);
        EXPECT_EQ(out != nullptr, SUCCEEDED(expected));
        ComPtr<IUnknown>(static_cast<IUnknown*>(out), adopt).reset();
        EXPECT_EQ(module.GetLockCount(), 0);
    }
    EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, nullptr), E_POINTER);
}

TEST_F(ModuleTest, TheCachedFactoryLocksOnlyWhileOthersHoldIt) {
    EXPECT_EQ(objects[1].cachedClassObject, 0U);
    auto factory = classObject();
    EXPECT_NE(objects[1].cachedClassObject, reinterpret_cast<std::uintptr_t>(factory.get()));
    EXPECT_EQ(module.GetLockCount(), 1);
    EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    EXPECT_EQ(factory, classObject());
    EXPECT_EQ(module.GetLockCount(), 1);
    factory.reset();
    EXPECT_EQ(module.GetLockCount(), 0);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST_F(ModuleTest, TheFactoryCreatesLocksAndRefuses) {
    auto const factory = classObject<IClassFactory>(IID_IClassFactory);
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

TEST_F(ModuleTest, AFailedClassObjectIsTriedAgain) {
    objects[1].makeClassObject = [](InstanceMaker, REFIID, void**) noexcept { return E_FAIL; };
    ComPtr<IUnknown> factory;
    EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, factory.putVoid()), E_FAIL);
    objects[1].makeClassObject = makeCachedClassFactory;
    EXPECT_TRUE(classObject());
}

TEST_F(ModuleTest, RacingCallersGetOneClassObject) {
    for (int round = 0; round < 50; ++round) {
        ObjectMapEntry fresh[] = {
            {&recordedClass, 0, makeCachedClassFactory, createWithOrWithoutOuter<Recorded>}};
        ComModuleRecord raced(fresh);
        expectOneForAll<IUnknown>([&](ComPtr<IUnknown>& place) {
            raced.getClassObject(recordedClass, IID_IUnknown, place.putVoid());
        });
        EXPECT_EQ(module.GetLockCount(), 0);
    }
}

TEST_F(ModuleTest, CountsLocksOfManyThreads) {
    auto const factory = classObject<IClassFactory>(IID_IClassFactory);
    expectOneForAll<IClassFactory>([&](ComPtr<IClassFactory>& place) {
        for (int n = 0; n < 5000; ++n) {
            factory->LockServer(TRUE);
            place = factory;
            factory->LockServer(FALSE);
        }
    });
    EXPECT_EQ(module.GetLockCount(), 1);
}

TEST(ModuleEnd, RunsHooksThenTermFunctionsThenRefuses) {
    plan = events = {};
    ObjectMapEntry objects[] = {{&recordedClass, 0, makeCachedClassFactory,
                                 createWithOrWithoutOuter<Recorded>, nullptr,
                                 [](bool starting) noexcept { note(starting ? "start" : "end"); }}};
    ComModuleRecord record(objects);
    EXPECT_EQ(currentModule(), nullptr);
    {
        TestModule module(record, libraryOfTests);
        EXPECT_EQ(currentModule(), &module);
        for (char const* name : {"first", "second"}) {
            auto const end = [](void* data) noexcept { note(static_cast<char*>(data)); };
            EXPECT_EQ(module.addTermFunction(end, const_cast<char*>(name)), S_OK);
        }
        ComPtr<IUnknown> factory;
        EXPECT_EQ(module.getClassObject(recordedClass, IID_IUnknown, factory.putVoid()), S_OK);
    }
    EXPECT_EQ(events, "start end second first");
    EXPECT_EQ(currentModule(), nullptr);
    EXPECT_NE(objects[0].cachedClassObject, 0U) << "the record gives the factory back later";
    void* out = &out;
    EXPECT_EQ(record.getClassObject(recordedClass, IID_IUnknown, &out), E_UNEXPECTED);
    EXPECT_EQ(out, nullptr);
}

TEST(ModuleEnd, TheRecordGivesItsClassObjectsBack) {
    static CountingUnknown classObject;
    auto const maker = [](InstanceMaker, REFIID id, void** out) noexcept {
        return classObject.QueryInterface(id, out);
    };
    ObjectMapEntry objects[] = {{&recordedClass, 0, maker, nullptr}};
    {
        ComModuleRecord record(objects);
        ComPtr<IUnknown> out;
        EXPECT_EQ(record.getClassObject(recordedClass, IID_IUnknown, out.putVoid()), S_OK);
        EXPECT_EQ(classObject.references, 2U);
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

TEST_F(ModuleTest, GivesTheTableOfGlobalInterfacesOfTheProcess) {
    IGlobalInterfaceTable* early = reinterpret_cast<IGlobalInterfaceTable*>(0x20);
    EXPECT_EQ(module.GetGITPtr(&early), CO_E_NOTINITIALIZED);
    EXPECT_EQ(early, nullptr);
    EXPECT_EQ(module.GetGITPtr(nullptr), E_POINTER);
    // The failure is not remembered.
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    expectOneForAll<IGlobalInterfaceTable>(
        [&](ComPtr<IGlobalInterfaceTable>& place) { module.GetGITPtr(place.put()); });
    ComPtr<IGlobalInterfaceTable> table, created;
    ASSERT_EQ(module.GetGITPtr(table.put()), S_OK);
    ASSERT_EQ(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                               IID_IGlobalInterfaceTable, created.putVoid()),
              S_OK);
    EXPECT_EQ(table, created);
    table.reset();
    created.reset();
    CoUninitialize();
}

}  // namespace
}  // namespace velk::com::test
