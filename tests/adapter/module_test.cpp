#include <gtest/gtest.h>

#include <QCoreApplication>

#include "support/native_values.h"
#include "support/proxy.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

TEST(Module, ClassObjects) {
    LoadedModule const module;
    void* out = &out;
    EXPECT_EQ(module.getClassObject(CLSID_VelkCOMProxy, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(module.getClassObject(CLSID_velkdspwrap, IID_IClassFactory, &out),
              CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(module.getClassObject(GUID_NULL, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(module.getClassObject(CLSID_VelkCOMProxy, IID_IDispatch, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    auto const factory = module.classFactory(CLSID_VelkCOMProxy);
    EXPECT_EQ(module.classFactory(CLSID_VelkCOMProxy), factory);
    // Aggregation needs IUnknown.
    auto const outer = makeProxy(module);
    EXPECT_EQ(factory->CreateInstance(outer.get(), IID_IDispatch, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, nullptr), E_POINTER);
    ComPtr<IUnknown> inner;
    ASSERT_EQ(factory->CreateInstance(outer.get(), IID_IUnknown, inner.putVoid()), S_OK);
    EXPECT_TRUE(inner.query<IVelkCOMProxy>(IID_IVelkCOMProxy));
}

TEST(Module, ObjectsAndLocksKeepItLoaded) {
    LoadedModule const module;
    RecordingHolder const host;
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    {
        auto const proxy = makeProxy(module);
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    {
        auto const facade = module.facadeOver(host.dispatch());
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    module.classFactory(CLSID_VelkCOMProxy)->LockServer(TRUE);
    EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    module.classFactory(CLSID_VelkCOMProxy)->LockServer(FALSE);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(Module, ExportedConversionMakesAnotherFacadeEachTime) {
    LoadedModule const module;
    RecordingHolder const host;
    auto const first = module.facadeOver(host.dispatch());
    auto const second = module.facadeOver(host.dispatch());
    EXPECT_NE(first.get(), second.get());
    auto* const convert =
        module.find<bool(mzIDispatch*, IDispatch**)>("convertMZCOMIDispatch2MSCOMIDispatch");
    EXPECT_FALSE(convert(host.dispatch(), nullptr));
    auto const unbound = module.facadeOver(nullptr);
    EXPECT_EQ(invoke(*unbound.get(), DISPID_VALUE, DISPATCH_METHOD, nullptr).code, E_UNEXPECTED);
    EXPECT_EQ(host->references(), 3U);
}

TEST(Module, LeavesTheProcessWithItsApplicationWhenItIsFreed) {
    for (int round = 0; round < 5; ++round) {
        {
            LoadedModule const module;
            ASSERT_TRUE(LoadedModule::isLoaded());
            RecordingHolder const host;
            // A new module numbers names from the start.
            auto const facade = module.facadeOver(host.dispatch());
            EXPECT_EQ(idOf(*facade.get(), OLESTR("Name")), 100);
            if (round % 2 != 0) makeProxy(module)->InitApplication(nullptr, nullptr);
            EXPECT_EQ(QCoreApplication::instance() != nullptr, round % 2 != 0);
        }
        ASSERT_FALSE(LoadedModule::isLoaded());
        EXPECT_EQ(QCoreApplication::instance(), nullptr);
    }
}

}  // namespace
