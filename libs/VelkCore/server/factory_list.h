#pragma once

#include <vector>

#include "host/class_factory.h"

/// The class factories of the loaded modules. Any thread.
namespace velk::core {

using FactoryList = std::vector<mzComPtrT<mzIClassFactory>>;

void addFactory(mzComPtrT<mzIClassFactory> const& factory);
void removeFactory(mzIClassFactory const* factory);

/// The factories of this moment, in the order in which they were added.
FactoryList currentFactories();

}  // namespace velk::core
