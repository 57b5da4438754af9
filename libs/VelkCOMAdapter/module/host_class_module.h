/// The module's side towards the host runtime: what it can create.
#pragma once

#include "host/class_factory.h"
#include "host/class_module.h"

/// Creates the module's host objects, each by a creator that is registered here.
class qxtClassFactory : public mzComDefaultClassFactory {
  public:
    /// A new factory; empty when there is no memory for it.
    static mzComPtrT<mzIClassFactory> make();
};

/// Brings the module's class factory to the runtime when its servers start.
class VelkCOMAdapter : public mzComClassModule {
  public:
    VelkCOMAdapter() { init(); }

    void registerFactories() override;
};
