/// The class CLSID_StdGlobalInterfaceTable.
#pragma once

#include <objidl.h>

namespace velk::platform::com {

/// Its class object. E_NOINTERFACE for what that does not offer. Thread-safe.
HRESULT globalInterfaceTableClass(REFIID riid, void** object) noexcept;

}  // namespace velk::platform::com
