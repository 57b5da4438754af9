#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

#include "com/com_ptr.h"

namespace velk::velkcom {

/// A new object of a class, named by its ProgID or by "{class id}" in UTF-8.
/// Throws CallFailure, or UsageError for text that is no UTF-8.
com::ComPtr<IDispatch> createObject(std::string const& progId);

}  // namespace velk::velkcom
