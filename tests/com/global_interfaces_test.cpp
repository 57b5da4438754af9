#include <array>
#include <thread>

#include "com/com_ptr.h"
#include "counting_unknown.h"
#include "support/start_gate.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

class GlobalInterfacesTest : public ModuleTest {
  protected:
    void SetUp() override {
        ModuleTest::SetUp();
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    }
    void TearDown() override {
        CoUninitialize();
        ModuleTest::TearDown();
    }
};

TEST_F(GlobalInterfacesTest, TheModuleGivesTheTableOfTheProcess) {
    ComPtr<IGlobalInterfaceTable> table;
    ComPtr<IGlobalInterfaceTable> again;
    ASSERT_EQ(module.GetGITPtr(table.put()), S_OK);
    ASSERT_EQ(module.GetGITPtr(again.put()), S_OK);
    EXPECT_EQ(table, again);
    ComPtr<IGlobalInterfaceTable> created;
    ASSERT_EQ(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                               IID_IGlobalInterfaceTable, created.putVoid()),
              S_OK);
    EXPECT_EQ(table, created);

    CountingUnknown object;
    DWORD cookie = 0;
    ASSERT_EQ(table->RegisterInterfaceInGlobal(&object, IID_IUnknown, &cookie), S_OK);
    ComPtr<IUnknown> found;
    EXPECT_EQ(again->GetInterfaceFromGlobal(cookie, IID_IUnknown, found.putVoid()), S_OK);
    EXPECT_EQ(found.get(), &object);
    found.reset();
    EXPECT_EQ(table->RevokeInterfaceFromGlobal(cookie), S_OK);
    EXPECT_EQ(object.references, 0U);
}

TEST_F(GlobalInterfacesTest, NullIsRefused) {
    EXPECT_EQ(module.GetGITPtr(nullptr), E_POINTER);
}

TEST_F(GlobalInterfacesTest, RacingCallersGetOneTable) {
    constexpr std::size_t callers = 4;
    std::array<ComPtr<IGlobalInterfaceTable>, callers> found;
    velk::test::StartGate start(callers);
    std::vector<std::thread> threads;
    for (auto& place : found) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            module.GetGITPtr(place.put());
        });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(found[0]);
    for (auto const& place : found) EXPECT_EQ(place, found[0]);
}

TEST_F(ModuleTest, TheGlobalTableNeedsAnApartmentFirst) {
    IGlobalInterfaceTable* table = reinterpret_cast<IGlobalInterfaceTable*>(0x20);
    EXPECT_EQ(module.GetGITPtr(&table), CO_E_NOTINITIALIZED);
    EXPECT_EQ(table, nullptr);
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    ComPtr<IGlobalInterfaceTable> later;
    EXPECT_EQ(module.GetGITPtr(later.put()), S_OK) << "the failure is not remembered";
    later.reset();
    CoUninitialize();
}

}  // namespace
}  // namespace velk::com::test
