#include <atomic>
#include <thread>

#include <gtest/gtest.h>
#include <QTimer>

#include "sample_objects.h"

// The application framework on a thread of its own.

namespace {

bool canCreate() {
    mzComPtrC out;
    return mzComCreateObject("scripting.dictionary", mzIDispatch::interfaceId(), out) == mzSuccess;
}

/// Runs one application on a new thread and `body` in it.
template <class Body>
void withApplication(PApplication::InitMode mode, Body body) {
    std::thread([&] {
        int argc = 1;
        char name[] = "velktest";
        char* argv[] = {name, nullptr};
        PApplication application(argc, argv, mode);
        application.initApplicationVersion("2.5");
        EXPECT_TRUE(application.initApplication("anonymous", "velk", "common", false));
        body(application);
    }).join();
}

TEST(Application, SetsNamesAndStartsTheServers) {
    EXPECT_EQ(QCoreApplication::instance(), nullptr);
    for (int round = 0; round < 3; ++round) {
        withApplication(PApplication::serverMode, [](PApplication& application) {
            EXPECT_EQ(QCoreApplication::instance(), &application);
            EXPECT_EQ(application.applicationName(), "anonymous");
            EXPECT_EQ(application.organizationName(), "velk");
            EXPECT_EQ(application.applicationVersion(), "2.5");
            EXPECT_EQ(application.property("settingsProfile").toString(), "common");
            EXPECT_EQ(application.initMode(), PApplication::serverMode);
            EXPECT_TRUE(canCreate());
        });
        EXPECT_EQ(QCoreApplication::instance(), nullptr);
        EXPECT_FALSE(canCreate()) << "the servers end with the application";
    }
    withApplication(PApplication::bareMode, [](PApplication&) { EXPECT_FALSE(canCreate()); });
}

TEST(Application, ServesEventsAndCallsOfOtherThreadsInItsSleep) {
    withApplication(PApplication::serverMode, [](PApplication& application) {
        std::atomic<int> called{0};
        mzComPtrT<velk::test::Sample> const sample(new velk::test::Sample);
        QTimer::singleShot(10, &application, [&] { ++called; });
        std::jthread const other([&] {
            QMetaObject::invokeMethod(
                &application, [&] { ++called; }, Qt::QueuedConnection);
            called += velk::test::call(sample.iface(), "Add", mzCallMethod, {3}).integer();
        });
        for (int i = 0; i < 500 && called < 5; ++i) mzComSleep(20, 0, nullptr);
        EXPECT_EQ(called, 5);
    });
}

}  // namespace
