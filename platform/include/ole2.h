/// Umbrella of the published COM and OLE Automation headers.
#pragma once

#include "objbase.h"
#include "oleauto.h"
