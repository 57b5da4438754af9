#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include <QCoreApplication>

#include "module/interfaces.h"
#include "support/loaded_module.h"
#include "support/native_values.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::Bstr;
using velk::com::ComPtr;
using velk::com::makeBstr;

class Proxy : public testing::Test {
  protected:
    void SetUp() override { proxy = makeProxy(); }
    void TearDown() override { proxy->TerminateApplication(); }

    ComPtr<IVelkCOMProxy> makeProxy() const {
        ComPtr<IVelkCOMProxy> made;
        EXPECT_EQ(module.classFactory(CLSID_VelkCOMProxy)
                      ->CreateInstance(nullptr, IID_IVelkCOMProxy, made.putVoid()),
                  S_OK);
        return made;
    }

    ComPtr<IDispatch> create(velk::com::TextView progId, HRESULT expected = S_OK) const {
        ComPtr<IDispatch> made;
        EXPECT_EQ(proxy->CreateObject(makeBstr(progId).get(), made.put()), expected);
        return made;
    }

    LoadedModule const module;
    ComPtr<IVelkCOMProxy> proxy;
};

TEST_F(Proxy, FirstObjectStartsTheAnonymousApplication) {
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    auto const dictionary = create(OLESTR("scripting.dictionary"));
    ASSERT_TRUE(dictionary);
    EXPECT_EQ(QCoreApplication::applicationName(), "anonymous");
    EXPECT_EQ(QCoreApplication::applicationVersion(), "1.0");
    Arguments entry{integerValue(1), integerValue(11)};
    EXPECT_EQ(invoke(*dictionary.get(), idOf(*dictionary.get(), OLESTR("Add")), DISPATCH_METHOD,
                     entry.get())
                  .code,
              S_OK);
    EXPECT_EQ(invoke(*dictionary.get(), idOf(*dictionary.get(), OLESTR("Count")),
                     DISPATCH_PROPERTYGET, nullptr)
                  .result.get()
                  .lVal,
              1);
}

TEST_F(Proxy, UnknownObjectsAreFalseAndWriteNothing) {
    IDispatch* const marker = proxy.get();
    for (velk::com::TextView const name :
         {velk::com::TextView(OLESTR("no.such.object")), velk::com::TextView(OLESTR("")),
          velk::com::TextView(OLESTR("\x416\xd800\0x"), 4)}) {
        Bstr const text = makeBstr(name);
        IDispatch* out = marker;
        EXPECT_EQ(proxy->CreateObject(text.get(), &out), S_FALSE);
        EXPECT_EQ(proxy->GetObject(text.get(), &out), S_FALSE);
        EXPECT_EQ(out, marker);
    }
    IDispatch* out = marker;
    EXPECT_EQ(proxy->CreateObject(nullptr, &out), S_FALSE);
    EXPECT_EQ(proxy->GetObject(nullptr, &out), S_FALSE);
    EXPECT_EQ(out, marker);
    EXPECT_EQ(proxy->CreateObject(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(proxy->GetObject(nullptr, nullptr), E_POINTER);
}

TEST_F(Proxy, RunningObjectIsFoundAndStillFalse) {
    RecordingHolder const running;
    unsigned cookie = 0;
    ASSERT_EQ(mzComRegisterActiveObject("test.running", running.dispatch(), cookie), mzSuccess);
    {
        ComPtr<IDispatch> found;
        EXPECT_EQ(proxy->GetObject(makeBstr(OLESTR("test.running")).get(), found.put()), S_FALSE);
        ASSERT_TRUE(found);
        EXPECT_EQ(invoke(*found.get(), DISPID_VALUE, DISPATCH_METHOD, nullptr).code, S_OK);
        EXPECT_EQ(running->calls().size(), 1U);
    }
    EXPECT_EQ(mzComRevokeActiveObject(cookie), mzSuccess);
    EXPECT_EQ(running->references(), 1U);
}

TEST_F(Proxy, NameAndVersionCountFromTheNextStart) {
    EXPECT_EQ(
        proxy->InitApplication(makeBstr(OLESTR("first")).get(), makeBstr(OLESTR("1.5")).get()),
        S_OK);
    EXPECT_EQ(QCoreApplication::applicationName(), "first");
    EXPECT_EQ(QCoreApplication::applicationVersion(), "1.5");
    EXPECT_EQ(proxy->InitApplication(makeBstr(OLESTR("second")).get(), nullptr), S_OK);
    EXPECT_EQ(QCoreApplication::applicationName(), "first");
    EXPECT_EQ(proxy->TerminateApplication(), S_OK);
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    EXPECT_TRUE(create(OLESTR("scripting.dictionary")));
    EXPECT_EQ(QCoreApplication::applicationName(), "second");
    EXPECT_EQ(QCoreApplication::applicationVersion(), "");
}

TEST_F(Proxy, ProxiesShareOneApplication) {
    auto const other = makeProxy();
    proxy->InitApplication(nullptr, nullptr);
    auto* const application = QCoreApplication::instance();
    other->InitApplication(nullptr, nullptr);
    EXPECT_EQ(QCoreApplication::instance(), application);
    EXPECT_EQ(other->TerminateApplication(), S_OK);
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    auto const before = std::chrono::steady_clock::now();
    EXPECT_EQ(proxy->TerminateApplication(), S_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(400));
}

TEST_F(Proxy, ClientsThatComeTogetherStartOneApplication) {
    std::vector<std::thread> clients;
    for (int index = 0; index < 4; ++index) {
        clients.emplace_back([this] {
            auto const own = makeProxy();
            ComPtr<IDispatch> made;
            EXPECT_EQ(own->CreateObject(makeBstr(OLESTR("scripting.dictionary")).get(), made.put()),
                      S_OK);
        });
    }
    for (auto& client : clients) client.join();
    EXPECT_NE(QCoreApplication::instance(), nullptr);
}

TEST_F(Proxy, ApplicationOfTheProcessIsUsed) {
    int argumentCount = 1;
    char program[] = "test";
    char* arguments[] = {program, nullptr};
    PApplication application(argumentCount, arguments, PApplication::serverMode);
    ASSERT_TRUE(application.initApplication("own", "velk", "common", false));
    auto const before = std::chrono::steady_clock::now();
    EXPECT_TRUE(create(OLESTR("scripting.dictionary")));
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(400));
    EXPECT_EQ(proxy->TerminateApplication(), S_OK);
    EXPECT_EQ(QCoreApplication::instance(), &application);
}

TEST_F(Proxy, TracesItsSteps) {
    proxy->InitApplication(nullptr, nullptr);
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel);
    create(OLESTR("scripting.dictionary"));
    create(OLESTR("no.such.object"), S_FALSE);
    makeProxy();
    struct Row {
        char const* message;
        char const* function;
    };
    static constexpr char createText[] =
        "long __cdecl CVelkCOMProxy::CreateObject(unsigned short *,struct IDispatch **)";
    static constexpr char makeText[] = "__cdecl CVelkCOMProxy::CVelkCOMProxy(void)";
    static constexpr char endText[] = "__cdecl CVelkCOMProxy::~CVelkCOMProxy(void)";
    constexpr Row expected[] = {
        {"Enter Frame CreateObject", createText},
        {"MZCOM create was ok", createText},
        {"Create Object ok", createText},
        {"Leave Frame CreateObject", createText},
        {"Enter Frame CreateObject", createText},
        {"Leave Frame CreateObject", createText},
        {"Enter Frame CVelkCOMProxy::CVelkCOMProxy", makeText},
        {"Leave Frame CVelkCOMProxy::CVelkCOMProxy", makeText},
        {"Enter Frame CVelkCOMProxy::~CVelkCOMProxy", endText},
        {"Leave Frame CVelkCOMProxy::~CVelkCOMProxy", endText},
    };
    auto const records = capture.records();
    ASSERT_EQ(records.size(), std::size(expected));
    for (std::size_t index = 0; index < records.size(); ++index) {
        EXPECT_EQ(records[index].message, expected[index].message);
        EXPECT_EQ(records[index].function, expected[index].function);
        EXPECT_EQ(records[index].level, 5000);
        EXPECT_EQ(records[index].file.rfind("VelkCOMProxy.", 0), 0U);
    }
}

}  // namespace
