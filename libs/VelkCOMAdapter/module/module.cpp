#include "module/module.h"

#include "com/registration/registrar.h"
#include "module/interfaces.h"

namespace {

constexpr velk::com::TextView applicationId = OLESTR("{6E1F2A90-4C3B-4D7E-A1F2-0B9C8D7E6F51}");

}  // namespace

CVelkCOMAdapterModule::CVelkCOMAdapterModule(velk::com::ComModuleRecord& record) noexcept
    : DllModule(record, LIBID_VelkCOMAdapterLib) {}

void CVelkCOMAdapterModule::AddCommonRGSReplacements(velk::com::Registrar& registrar) {
    registrar.addReplacement(OLESTR("APPID"), applicationId);
}
