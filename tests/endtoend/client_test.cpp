#include <gtest/gtest.h>

#include <objbase.h>
#include <windows.h>

#include <oleauto.h>

#include "com/owners.h"
#include "support/expected_difference.h"
#include "support/installed_module.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;
using velk::com::makeBstr;
using velk::com::TextView;
using velk::com::Variant;

/// A client that knows the ProgID and names of members, and nothing else.
class Client : public testing::TestWithParam<char const*> {
  protected:
    void SetUp() override {
        ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        ASSERT_EQ(InstalledModule().install(true, GetParam()), S_OK);
        CLSID id{};
        auto const resolve = [&] {
            EXPECT_EQ(CLSIDFromProgID(OLESTR("VelkCOMAdapter.VelkCOMProxy"), &id), S_OK);
        };
        if (*GetParam()) {
            expectDifference(System::wine, "does not look for classes of the user", resolve);
            if (runsOn(System::wine)) GTEST_SKIP();
        } else {
            resolve();
        }
        ASSERT_EQ(
            CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, proxy.putVoid()),
            S_OK);
    }
    void TearDown() override {
        if (proxy) call(proxy, OLESTR("TerminateApplication"));
        proxy.reset();
        EXPECT_EQ(InstalledModule().install(false, GetParam()), S_OK);
        CoFreeUnusedLibraries();
        CoUninitialize();
    }

    struct Outcome {
        HRESULT code;
        Variant result;
    };

    Outcome call(ComPtr<IDispatch> const& object, std::basic_string<OLECHAR> name,
                 std::initializer_list<TextView> texts = {},
                 WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET) {
        Outcome outcome{};
        LPOLESTR names[] = {name.data()};
        DISPID id = 0;
        outcome.code = object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
        if (FAILED(outcome.code)) return outcome;
        std::vector<Variant> owned;
        std::vector<VARIANT> reversed;
        for (auto text = std::rbegin(texts); text != std::rend(texts); ++text) {
            VARIANT value{};
            value.vt = VT_BSTR;
            value.bstrVal = makeBstr(*text).release();
            owned.emplace_back(value);
            reversed.push_back(value);
        }
        DISPPARAMS parameters{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        outcome.code = object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &parameters,
                                      outcome.result.put(), nullptr, nullptr);
        return outcome;
    }

    ComPtr<IDispatch> objectIn(Outcome const& outcome) {
        EXPECT_EQ(outcome.result.get().vt, VT_DISPATCH);
        return outcome.result.get().vt == VT_DISPATCH
                   ? ComPtr<IDispatch>(outcome.result.get().pdispVal)
                   : ComPtr<IDispatch>();
    }

    ComPtr<IDispatch> proxy;
};

TEST_P(Client, UsesAHostObjectByName) {
    ASSERT_EQ(call(proxy, OLESTR("InitApplication"), {OLESTR("client"), OLESTR("2.0")}).code, S_OK);
    auto const dictionary =
        objectIn(call(proxy, OLESTR("CreateObject"), {OLESTR("scripting.dictionary")}));
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(call(dictionary, OLESTR("Add"), {OLESTR("key"), OLESTR("value")}).code, S_OK);
    auto const item = call(dictionary, OLESTR("Item"), {OLESTR("key")});
    ASSERT_EQ(item.result.get().vt, VT_BSTR);
    EXPECT_EQ(velk::com::viewBstr(item.result.get().bstrVal), OLESTR("value"));
    EXPECT_EQ(call(dictionary, OLESTR("Count")).result.get().lVal, 1);
    EXPECT_EQ(call(dictionary, OLESTR("NoSuchMember")).code, DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(dictionary, OLESTR("Add"), {OLESTR("key"), OLESTR("again")}).code,
              DISP_E_EXCEPTION);
}

TEST_P(Client, RestartsTheApplication) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(
            objectIn(call(proxy, OLESTR("CreateObject"), {OLESTR("scripting.dictionary")})));
        EXPECT_EQ(call(proxy, OLESTR("terminateapplication")).code, S_OK);
    }
}

TEST_P(Client, LearnsThatThereIsNoSuchObject) {
    auto const created = call(proxy, OLESTR("CreateObject"), {OLESTR("no.such.object")});
    EXPECT_TRUE(SUCCEEDED(created.code));
    EXPECT_EQ(created.result.get().pdispVal, nullptr);
    auto const found = call(proxy, OLESTR("GetObject"), {OLESTR("no.such.object")});
    EXPECT_TRUE(SUCCEEDED(found.code));
    EXPECT_EQ(found.result.get().pdispVal, nullptr);
}

TEST_P(Client, SeesTheTypeInformationOfTheProxyAndOfFacades) {
    auto const dictionary =
        objectIn(call(proxy, OLESTR("CreateObject"), {OLESTR("scripting.dictionary")}));
    ASSERT_TRUE(dictionary);
    for (auto const& [object, expected] :
         {std::pair{proxy, TextView(OLESTR("IVelkCOMProxy"))},
          std::pair{dictionary, TextView(OLESTR("Ivelkdspwrap"))}}) {
        ComPtr<ITypeInfo> type;
        ASSERT_EQ(object->GetTypeInfo(0, 0x0409, type.put()), S_OK);
        velk::com::Bstr name;
        ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.put(), nullptr, nullptr, nullptr),
                  S_OK);
        EXPECT_EQ(velk::com::viewBstr(name), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(ForMachineAndUser, Client, testing::Values("", "user"));

}  // namespace
