#include "com/object.h"

#include "com/aggregate.h"
#include "support/data_table.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

using ObjectTest = ModuleTest;

/// All ways from one interface to another lead to the same objects.
void expectOneIdentity(ComPtr<IRecorded> const& first, IUnknown* identity) {
    auto const second = first.query<ISecond>(secondInterface);
    ASSERT_TRUE(second);
    EXPECT_EQ(first->answer(), 42);
    EXPECT_EQ(second->secondAnswer(), 43);
    EXPECT_EQ(first.query<IUnknown>(IID_IUnknown).get(), identity);
    EXPECT_EQ(second.query<IUnknown>(IID_IUnknown).get(), identity);
    EXPECT_EQ(second.query<IRecorded>(recordedInterface), first);
    void* out = &out;
    EXPECT_EQ(first->QueryInterface(IID_IDispatch, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
}

TEST_F(ObjectTest, LivesFromItsFirstToItsLastReference) {
    for (char const* what : {"", "uses itself"}) {
        plan = what;
        events = {};
        ComPtr<IRecorded> object;
        ASSERT_EQ(Recorded::CreateInstance(nullptr, recordedInterface, object.putVoid()), S_OK);
        EXPECT_EQ(module.GetLockCount(), 1);
        expectOneIdentity(object, object.get());
        EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
        EXPECT_EQ(object->AddRef(), 2U);
        EXPECT_EQ(object->Release(), 1U);
        EXPECT_EQ(events, "made constructed");
        object.reset();
        EXPECT_EQ(events, "made constructed released destroyed");
        EXPECT_EQ(module.GetLockCount(), 0);
    }
}

TEST_F(ObjectTest, IsPartOfAnother) {
    CountingUnknown outer;
    ASSERT_EQ(createWithOrWithoutOuter<Recorded>(&outer, IID_IUnknown, outer.part.putVoid()), S_OK);
    EXPECT_EQ(outer.references, 0U) << "a part must not hold the whole";
    EXPECT_EQ(module.GetLockCount(), 1);
    {
        auto const shown = ComPtr<IUnknown>(&outer).query<IRecorded>(recordedInterface);
        ASSERT_TRUE(shown);
        expectOneIdentity(shown, &outer);
        EXPECT_EQ(shown->AddRef(), 2U);
        EXPECT_EQ(shown->Release(), 1U);
        // Its own IUnknown answers for itself.
        auto const own = outer.part.query<IUnknown>(IID_IUnknown);
        EXPECT_EQ(own, outer.part);
        EXPECT_EQ(own->AddRef(), 3U);
        EXPECT_EQ(own->Release(), 2U);
    }
    EXPECT_EQ(outer.part->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(outer.references, 0U);
    outer.part.reset();
    EXPECT_EQ(events, "made constructed released destroyed");
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

TEST_F(ObjectTest, FailedCreationLeavesNothing) {
    std::map<std::string, InstanceMaker> const classes{
        {"recorded", createWithOrWithoutOuter<Recorded>},
        {"recorded, never a part", createWithoutOuter<Recorded>},
        {"lockless", createWithOrWithoutOuter<Lockless>}};
    std::map<std::string, IID> const interfaces{
        {"unknown", IID_IUnknown}, {"own", recordedInterface}, {"other", IID_IDispatch}};
    velk::test::expectTable("com/failed_creations.tsv", [&](auto const& row) {
        plan = row["plan"];
        events = {};
        CountingUnknown outer;
        auto* const given = row["made"] == "part" ? &outer : nullptr;
        auto const make = classes.at(row["class"]);
        EXPECT_EQ(make(given, IID_IUnknown, nullptr), E_POINTER);
        void* out = &out;
        HRESULT const code = make(given, interfaces.at(row["asked"]), &out);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(outer.references, 0U);
        EXPECT_EQ(outer.queries, 0);
        EXPECT_EQ(module.GetLockCount(), 0);
        return hexadecimal(code) + (events.empty() ? "" : " " + events);
    });
}

TEST_F(ObjectTest, CanBeMadeByClassWithoutAReference) {
    CComObject<Recorded>* object = nullptr;
    ASSERT_EQ(CComObject<Recorded>::CreateInstance(&object), S_OK);
    EXPECT_EQ(module.GetLockCount(), 1);
    ComPtr<IRecorded> const held(object);
    EXPECT_TRUE(object->sectionInitialised());
    EXPECT_EQ(CComObject<Recorded>::CreateInstance(nullptr), E_POINTER);
}

}  // namespace
}  // namespace velk::com::test
