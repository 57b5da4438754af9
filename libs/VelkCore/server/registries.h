/// The runtime's lists of running objects and of class factories. Any thread.
#pragma once

#include <string>
#include <vector>

#include "host/class_factory.h"

namespace velk::core {

/// A class name or ProgID in the form in which the lists keep it: ASCII
/// letters in lower case. Null gives the empty name, which names nothing.
inline std::string foldedName(char const* name) {
    std::string folded(name != nullptr ? name : "");
    for (char& unit : folded) {
        if (unit >= 'A' && unit <= 'Z') unit = static_cast<char>(unit + ('a' - 'A'));
    }
    return folded;
}

/// The newest running object of the ProgID, empty when there is none.
mzComPtrC findActiveObject(char const* progId);
/// Gives up every running object, when the servers end.
void forgetActiveObjects();

using FactoryList = std::vector<mzComPtrT<mzIClassFactory>>;

void addFactory(mzComPtrT<mzIClassFactory> const& factory);
void removeFactory(mzIClassFactory const* factory);
/// The factories of this moment, in the order in which they were added.
FactoryList currentFactories();

}  // namespace velk::core
