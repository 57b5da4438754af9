/// Entry points and result codes of self-registering modules.
#pragma once

#include "oleauto.h"

STDAPI DllRegisterServer();
STDAPI DllUnregisterServer();
