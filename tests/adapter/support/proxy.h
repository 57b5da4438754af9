/// The module's proxy as clients use it.
#pragma once

#include "module/interfaces.h"
#include "support/loaded_module.h"

namespace velk::test {

inline com::ComPtr<IVelkCOMProxy> makeProxy(LoadedModule const& module) {
    com::ComPtr<IVelkCOMProxy> proxy;
    EXPECT_EQ(module.classFactory(CLSID_VelkCOMProxy)
                  ->CreateInstance(nullptr, IID_IVelkCOMProxy, proxy.putVoid()),
              S_OK);
    return proxy;
}

/// A dictionary, unless it answers that there is none.
inline HRESULT create(IVelkCOMProxy& proxy, com::TextView progId = OLESTR("scripting.dictionary")) {
    com::ComPtr<IDispatch> made;
    HRESULT const code = proxy.CreateObject(com::makeBstr(progId).get(), made.put());
    EXPECT_EQ(code == S_OK, static_cast<bool>(made));
    return code;
}

/// A test with a loaded module and a proxy, which ends the application.
class WithProxy : public testing::Test {
  protected:
    void TearDown() override { proxy->TerminateApplication(); }

    LoadedModule const module;
    com::ComPtr<IVelkCOMProxy> proxy = makeProxy(module);
};

}  // namespace velk::test
