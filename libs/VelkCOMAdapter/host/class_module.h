#pragma once

#include <vector>

#include "host/class_factory.h"
#include "host/server_state_event.h"

/// A module's class factories. A module has one static object of a class
/// derived from this, which calls `init()` once it is constructed.
class VELKCORE_API mzComClassModule : public mzComServerStateEventC {
  public:
    mzComClassModule();
    ~mzComClassModule() override;

    /// Calls `registerFactories`.
    unsigned serverInit() override;
    /// Gives the factories up.
    unsigned serverDone() override;
    /// Calls `addFactory` for each of the module's factories.
    virtual void registerFactories();

  protected:
    /// Makes a factory and adds it to those by which the runtime creates
    /// objects; an empty pointer from `makeFactory` adds nothing.
    void addFactory(mzComPtrT<mzIClassFactory> (*makeFactory)());

  private:
    std::vector<mzComPtrT<mzIClassFactory>> factories_;
};
