/// The properties in a stream, read without the layer.
#pragma once

#include <compare>
#include <map>
#include <string>

#include <windows.h>

#include <propidl.h>

namespace velk::test {

/// The number of the section, the id, and how many of that id came before.
struct PropertyPlace {
    std::size_t section;
    PROPID id;
    std::size_t before;
    // The check takes the comparison's 0 for a pointer.
    auto operator<=>(PropertyPlace const&) const = default;  // NOLINT(modernize-use-nullptr)
};

/// The bytes of each property. What makes no sense as a section is one without
/// an id.
std::map<PropertyPlace, std::string> propertiesIn(std::string const& stream);

}  // namespace velk::test
