#include <gtest/gtest.h>

#include <chrono>

#include <QCoreApplication>

#include "module/interfaces.h"
#include "support/loaded_module.h"
#include "support/native_values.h"
#include "support/recording_object.h"

namespace {

using namespace velk::test;
using velk::com::ComPtr;

ComPtr<IVelkCOMProxy> makeProxy(LoadedModule const& module) {
    ComPtr<IVelkCOMProxy> proxy;
    EXPECT_EQ(module.classFactory(CLSID_VelkCOMProxy)
                  ->CreateInstance(nullptr, IID_IVelkCOMProxy, proxy.putVoid()),
              S_OK);
    return proxy;
}

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
    EXPECT_EQ(module.classFactory(CLSID_VelkCOMProxy), module.classFactory(CLSID_VelkCOMProxy));
}

TEST(Module, ObjectsAndLocksKeepItLoaded) {
    LoadedModule const module;
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    {
        auto const proxy = makeProxy(module);
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    {
        RecordingHolder const host;
        auto const facade = module.facadeOver(host.dispatch());
        EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    }
    EXPECT_EQ(module.canUnloadNow(), S_OK);
    auto factory = module.classFactory(CLSID_VelkCOMProxy);
    factory->LockServer(TRUE);
    factory.reset();
    EXPECT_EQ(module.canUnloadNow(), S_FALSE);
    module.classFactory(CLSID_VelkCOMProxy)->LockServer(FALSE);
    EXPECT_EQ(module.canUnloadNow(), S_OK);
}

TEST(Module, AggregationNeedsUnknown) {
    LoadedModule const module;
    auto const outer = makeProxy(module);
    auto const factory = module.classFactory(CLSID_VelkCOMProxy);
    void* out = &out;
    EXPECT_EQ(factory->CreateInstance(outer.get(), IID_IDispatch, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, nullptr), E_POINTER);
    ComPtr<IUnknown> inner;
    ASSERT_EQ(factory->CreateInstance(outer.get(), IID_IUnknown, inner.putVoid()), S_OK);
    EXPECT_TRUE(inner.query<IVelkCOMProxy>(IID_IVelkCOMProxy));
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
    ComPtr<IDispatch> unbound;
    EXPECT_TRUE(convert(nullptr, unbound.put()));
    EXPECT_EQ(invoke(*unbound.get(), DISPID_VALUE, DISPATCH_METHOD, nullptr).code, E_UNEXPECTED);
    EXPECT_EQ(host->references(), 3U);
}

TEST(Module, LeavesTheProcessWhenItIsFreed) {
    for (int round = 0; round < 5; ++round) {
        ASSERT_FALSE(LoadedModule::isLoaded());
        LoadedModule const module;
        ASSERT_TRUE(LoadedModule::isLoaded());
        RecordingHolder const host;
        auto const facade = module.facadeOver(host.dispatch());
        // A new module numbers names from the start.
        EXPECT_EQ(idOf(*facade.get(), OLESTR("Name")), 100);
    }
    EXPECT_FALSE(LoadedModule::isLoaded());
}

TEST(Module, StopsTheApplicationWhenItIsFreed) {
    for (int round = 0; round < 2; ++round) {
        {
            LoadedModule const module;
            makeProxy(module)->InitApplication(nullptr, nullptr);
            EXPECT_NE(QCoreApplication::instance(), nullptr);
            EXPECT_EQ(module.canUnloadNow(), S_OK) << "the application does not hold the module";
        }
        EXPECT_FALSE(LoadedModule::isLoaded());
        EXPECT_EQ(QCoreApplication::instance(), nullptr);
    }
}

}  // namespace
