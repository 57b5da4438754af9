#include "support/client.h"
#include "support/expected_difference.h"
#include "support/installed_module.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;
using velk::com::viewBstr;

class Client : public testing::TestWithParam<char const*> {
  protected:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        ASSERT_EQ(InstalledModule().install(true, GetParam()), S_OK);
        if (*GetParam() && hasDifference("user-classes")) {
            expectDifference("user-classes", [] { proxyClass(); });
            GTEST_SKIP();
        }
        proxy = newProxy(proxyClass());
        ASSERT_TRUE(proxy);
    }
    void TearDown() override {
        if (proxy) call(proxy, OLESTR("TerminateApplication"));
        proxy.reset();
        EXPECT_EQ(InstalledModule().install(false, GetParam()), S_OK);
        CoFreeUnusedLibraries();
        CoUninitialize();
    }

    ComPtr<IDispatch> newDictionary() {
        return call(proxy, OLESTR("CreateObject"), {OLESTR("scripting.dictionary")}).object();
    }

    ComPtr<IDispatch> proxy;
};

TEST_P(Client, UsesAHostObjectByName) {
    ASSERT_EQ(call(proxy, OLESTR("InitApplication"), {OLESTR("client"), OLESTR("2.0")}).code, S_OK);
    auto const dictionary = newDictionary();
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(call(dictionary, OLESTR("Add"), {OLESTR("key"), OLESTR("value")}).code, S_OK);
    auto const item = call(dictionary, OLESTR("Item"), {OLESTR("key")});
    ASSERT_EQ(item.result.get().vt, VT_BSTR);
    EXPECT_EQ(viewBstr(item.result.get().bstrVal), OLESTR("value"));
    EXPECT_EQ(call(dictionary, OLESTR("Count")).result.get().lVal, 1);
    EXPECT_EQ(call(dictionary, OLESTR("NoSuchMember")).code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(dictionary, OLESTR("Add"), {OLESTR("key"), OLESTR("again")}).code,
              DISP_E_EXCEPTION);
}

TEST_P(Client, RestartsTheApplication) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(newDictionary());
        EXPECT_EQ(call(proxy, OLESTR("terminateapplication")).code, S_OK);
    }
}

TEST_P(Client, LearnsThatThereIsNoSuchObject) {
    for (auto const* member : {OLESTR("CreateObject"), OLESTR("GetObject")}) {
        auto const outcome = call(proxy, member, {OLESTR("no.such.object")});
        EXPECT_TRUE(SUCCEEDED(outcome.code));
        EXPECT_FALSE(outcome.object());
    }
}

TEST_P(Client, SeesTheTypeInformationOfTheProxyAndOfFacades) {
    for (auto const& [object, expected] :
         {std::pair{proxy, OLESTR("IVelkCOMProxy")}, {newDictionary(), OLESTR("Ivelkdspwrap")}}) {
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(object->GetTypeInfo(0, 0x0409, type.put()), S_OK);
        velk::com::Bstr name;
        ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(viewBstr(name), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(ForMachineAndUser, Client, testing::Values("", "user"));

}  // namespace
