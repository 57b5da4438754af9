#include <gtest/gtest.h>

#include <chrono>

#include <QCoreApplication>

#include "support/data_table.h"
#include "support/native_values.h"
#include "support/proxy.h"
#include "support/recording_object.h"

namespace {

using namespace std::chrono_literals;
using namespace velk::test;
using velk::com::ComPtr;
using velk::com::makeBstr;

class Proxy : public WithProxy {};

std::string application() {
    return QCoreApplication::instance() ? QCoreApplication::applicationName().toStdString() + ' ' +
                                              QCoreApplication::applicationVersion().toStdString()
                                        : "none";
}

TEST_F(Proxy, UnknownObjectsAreFalseAndWriteNothing) {
    IDispatch* const marker = proxy.get();
    IDispatch* out = marker;
    for (velk::com::TextView const name :
         {velk::com::TextView(OLESTR("no.such.object")), velk::com::TextView(OLESTR("")),
          velk::com::TextView(OLESTR("\x416\xd800\0x"), 4)}) {
        auto const text = makeBstr(name);
        EXPECT_EQ(proxy->CreateObject(text.get(), &out), S_FALSE);
        EXPECT_EQ(proxy->GetObject(text.get(), &out), S_FALSE);
    }
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

TEST_F(Proxy, NameAndVersionCountFromTheNextStartForAllProxies) {
    auto const init = [&](OLECHAR const* name, BSTR version) {
        EXPECT_EQ(proxy->InitApplication(makeBstr(name).get(), version), S_OK);
        return application();
    };
    EXPECT_EQ(application(), "none");
    ComPtr<IDispatch> made;
    ASSERT_EQ(proxy->CreateObject(makeBstr(OLESTR("scripting.dictionary")).get(), made.put()),
              S_OK);
    DISPID const count = idOf(*made.get(), OLESTR("Count"));
    EXPECT_EQ(invoke(*made.get(), count, DISPATCH_PROPERTYGET, nullptr).result.get().vt, VT_I4);
    EXPECT_EQ(application(), "anonymous 1.0");
    auto* const first = QCoreApplication::instance();
    auto const version = makeBstr(OLESTR("1.5"));
    EXPECT_EQ(init(OLESTR("first"), version.get()), "anonymous 1.0");
    auto const other = makeProxy(module);
    EXPECT_EQ(create(*other.get()), S_OK);
    EXPECT_EQ(QCoreApplication::instance(), first);
    EXPECT_EQ(other->TerminateApplication(), S_OK);
    EXPECT_EQ(application(), "none");
    auto const before = std::chrono::steady_clock::now();
    EXPECT_EQ(proxy->TerminateApplication(), S_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - before, 400ms);
    EXPECT_EQ(create(*proxy.get()), S_OK);
    EXPECT_EQ(application(), "first 1.5");
    proxy->TerminateApplication();
    EXPECT_EQ(init(OLESTR("second"), nullptr), "second ");
}

TEST_F(Proxy, ApplicationOfTheProcessIsUsed) {
    int argumentCount = 1;
    char program[] = "test";
    char* arguments[] = {program, nullptr};
    PApplication application(argumentCount, arguments, PApplication::serverMode);
    ASSERT_TRUE(application.initApplication("own", "velk", "common", false));
    auto const before = std::chrono::steady_clock::now();
    EXPECT_EQ(create(*proxy.get()), S_OK);
    EXPECT_LT(std::chrono::steady_clock::now() - before, 400ms);
    EXPECT_EQ(proxy->TerminateApplication(), S_OK);
    EXPECT_EQ(QCoreApplication::instance(), &application);
}

TEST_F(Proxy, TracesItsSteps) {
    proxy->InitApplication(nullptr, nullptr);
    mzLogCaptureC const capture(codeTrackLogger, mzTraceLevel);
    create(*proxy.get());
    create(*proxy.get(), OLESTR("no.such.object"));
    makeProxy(module);
    std::string text;
    for (auto const& record : capture.records()) {
        text += std::to_string(record.level) + ' ' + record.file.substr(0, record.file.find('.')) +
                ": " + record.message + "\n    " + record.function + '\n';
    }
    expectApproved("bridge/proxy_trace.txt", text);
}

}  // namespace
