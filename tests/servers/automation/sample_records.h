/// Records as values.
#pragma once

#include "com/owners.h"
#include "servers/automation/sample_interfaces.h"

namespace velk::test::server {

/// The information of a record of the test library. Throws com::Error.
com::ComPtr<IRecordInfo> recordInfo(GUID const& id);

/// A record of its own, empty at first. Throws com::Error.
com::Variant makeRecord(GUID const& id);

/// The Point in a VT_RECORD. Throws com::Error(DISP_E_TYPEMISMATCH) for
/// everything else.
Point& pointIn(VARIANT& value);

}  // namespace velk::test::server
