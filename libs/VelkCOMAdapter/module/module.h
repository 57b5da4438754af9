/// The native COM module.
#pragma once

#include "com/module.h"

/// What COM asks of the module: its classes, its lock count, its identity.
class CVelkCOMAdapterModule : public velk::com::DllModule {
  public:
    /// `record` must outlive the module.
    explicit CVelkCOMAdapterModule(velk::com::ComModuleRecord& record) noexcept;

    /// Adds APPID to what every registry script of the module can use.
    void AddCommonRGSReplacements(velk::com::Registrar& registrar) override;
};
