/// Umbrella of the published system headers.
#pragma once

#include "guiddef.h"
#include "winbase.h"
#include "windef.h"
#include "winerror.h"
#include "winreg.h"
