#pragma once

#include <string>

namespace velk::core {

/// A class name or ProgID in the form in which the registries keep it: ASCII
/// letters in lower case. Null gives the empty name, which names nothing.
inline std::string foldedName(char const* name) {
    std::string folded(name != nullptr ? name : "");
    for (char& unit : folded) {
        if (unit >= 'A' && unit <= 'Z') {
            unit = static_cast<char>(unit + ('a' - 'A'));
        }
    }
    return folded;
}

}  // namespace velk::core
