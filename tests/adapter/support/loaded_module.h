/// The module as a client loads it.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "com/owners.h"
#include "host/dispatch.h"

namespace velk::test {

/// The module's file.
std::basic_string<OLECHAR> modulePath();

/// The module, held loaded by this object.
class LoadedModule {
  public:
    LoadedModule() : module_(LoadLibraryW(modulePath().c_str())) {
        EXPECT_NE(module_.get(), nullptr) << "the module does not load";
    }

    template <typename Function>
    Function* find(char const* name) const {
        auto const address = GetProcAddress(module_.get(), name);
        EXPECT_NE(address, nullptr) << name;
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
    }

    HRESULT getClassObject(REFCLSID id, REFIID riid, void** out) const {
        return find<HRESULT STDAPICALLTYPE(REFCLSID, REFIID, LPVOID*)>("DllGetClassObject")(
            id, riid, out);
    }
    HRESULT canUnloadNow() const { return find<HRESULT STDAPICALLTYPE()>("DllCanUnloadNow")(); }
    com::ComPtr<IClassFactory> classFactory(REFCLSID id) const {
        com::ComPtr<IClassFactory> factory;
        EXPECT_EQ(getClassObject(id, IID_IClassFactory, factory.putVoid()), S_OK);
        return factory;
    }
    com::ComPtr<IDispatch> facadeOver(mzIDispatch* object) const {
        com::ComPtr<IDispatch> facade;
        EXPECT_TRUE(find<bool(mzIDispatch*, IDispatch**)>("convertMZCOMIDispatch2MSCOMIDispatch")(
            object, facade.put()));
        return facade;
    }

    /// Whether the module's file is loaded in this process now.
    static bool isLoaded() { return GetModuleHandleW(modulePath().c_str()) != nullptr; }

  private:
    com::Module module_;
};

}  // namespace velk::test
