#include "com/object.h"

#include "counting_unknown.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

class ObjectTest : public ModuleTest {
  protected:
    void SetUp() override {
        ModuleTest::SetUp();
        plan.events.clear();
    }
};

TEST_F(ObjectTest, LivesFromItsFirstToItsLastReference) {
    ComPtr<IRecorded> object;
    ASSERT_EQ(Recorded::CreateInstance(nullptr, recordedInterface, object.putVoid()), S_OK);
    EXPECT_EQ(module.GetLockCount(), 1);
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
    EXPECT_EQ(object->answer(), 42);
    EXPECT_EQ(plan.events, (Events{"made", "constructed"}));
    object.reset();
    EXPECT_EQ(plan.events, (Events{"made", "constructed", "released", "destroyed"}));
    EXPECT_EQ(module.GetLockCount(), 0);
}

TEST_F(ObjectTest, AnswersItsInterfacesWithOneIdentity) {
    ComPtr<IRecorded> first;
    ASSERT_EQ(Recorded::CreateInstance(nullptr, recordedInterface, first.putVoid()), S_OK);
    auto const second = first.query<ISecond>(secondInterface);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->secondAnswer(), 43);
    // IUnknown is the first entry's pointer from wherever it is asked.
    auto const fromFirst = first.query<IUnknown>(IID_IUnknown);
    auto const fromSecond = second.query<IUnknown>(IID_IUnknown);
    EXPECT_EQ(fromFirst, fromSecond);
    EXPECT_EQ(fromFirst.get(), static_cast<IUnknown*>(first.get()));

    void* out = &out;
    EXPECT_EQ(first->QueryInterface(IID_IDispatch, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(first->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(first->AddRef(), 5U);
    EXPECT_EQ(first->Release(), 4U);
}

TEST_F(ObjectTest, FailedCreationLeavesNothing) {
    struct Case {
        char const* name;
        RecordedPlan plan;
        IID const* asked;
        HRESULT expected;
        Events events;
    };
    Case const cases[] = {
        {"construction refused",
         {.events = {}, .construction = E_ACCESSDENIED},
         &recordedInterface,
         E_ACCESSDENIED,
         {"made", "constructed", "released", "destroyed"}},
        {"interface unknown",
         {},
         &IID_IDispatch,
         E_NOINTERFACE,
         {"made", "constructed", "released", "destroyed"}},
        {"no memory", {.events = {}, .noMemory = true}, &recordedInterface, E_OUTOFMEMORY, {}},
        {"constructor throws",
         {.events = {}, .throwInConstructor = true},
         &recordedInterface,
         REGDB_E_READREGDB,
         {}},
    };
    for (auto const& entry : cases) {
        plan = entry.plan;
        void* out = &out;
        EXPECT_EQ(Recorded::CreateInstance(nullptr, *entry.asked, &out), entry.expected)
            << entry.name;
        EXPECT_EQ(out, nullptr) << entry.name;
        EXPECT_EQ(plan.events, entry.events) << entry.name;
        EXPECT_EQ(module.GetLockCount(), 0) << entry.name;
    }
    EXPECT_EQ(Recorded::CreateInstance(nullptr, recordedInterface, nullptr), E_POINTER);
}

TEST_F(ObjectTest, SurvivesReferencesTakenWhileItIsConstructed) {
    plan.referenceItselfMeanwhile = true;
    ComPtr<IRecorded> object;
    ASSERT_EQ(Recorded::CreateInstance(nullptr, recordedInterface, object.putVoid()), S_OK);
    EXPECT_EQ(object->AddRef(), 2U);
    EXPECT_EQ(object->Release(), 1U);
}

TEST_F(ObjectTest, CanBeMadeByClassWithoutAReference) {
    CComObject<Recorded>* object = nullptr;
    ASSERT_EQ(CComObject<Recorded>::CreateInstance(&object), S_OK);
    EXPECT_EQ(module.GetLockCount(), 1);
    ComPtr<IRecorded> const held(object);
    EXPECT_TRUE(object->sectionInitialised());
    EXPECT_EQ(CComObject<Recorded>::CreateInstance(nullptr), E_POINTER);
}

// A threading model whose lock cannot be made.
struct LocklessModel : CComMultiThreadModel {
    struct Section : NoCriticalSection {
        HRESULT initialise() noexcept { return HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY); }
    };
};
struct Lockless : CComObjectRootEx<LocklessModel>, IRecorded {
    VELK_COM_MAP(Lockless, VELK_COM_INTERFACE(IRecorded, recordedInterface))
    int STDMETHODCALLTYPE answer() override { return 0; }
};

TEST_F(ObjectTest, ReportsALockThatCannotBeMade) {
    CountingUnknown outer;
    for (IUnknown* given : {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(&outer)}) {
        void* out = &out;
        EXPECT_EQ(createWithOrWithoutOuter<Lockless>(given, IID_IUnknown, &out),
                  HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY));
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(module.GetLockCount(), 0);
    }
}

}  // namespace
}  // namespace velk::com::test
