/// A reader of compound files that has nothing in common with the layer's: it
/// goes by the published layout alone, and reads on where a file is damaged.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace velk::test {

/// What one entry of the directory keeps, wherever that stands.
struct Element {
    /// The bytes of the entry without its links, its colour and its place.
    std::string entry;
    /// What it leads to, as far as that is there.
    std::string bytes;
    /// Whether those who search the tree by its name come to it.
    bool isFound = false;

    bool isStream() const { return entry[66] == 2; }
    bool isStorage() const { return entry[66] == 1; }
    bool operator==(Element const& other) const {
        return entry == other.entry && bytes == other.bytes;
    }
};

/// By path: names as they are stored, a slash before each; the root's is empty.
using Elements = std::multimap<std::u16string, Element>;

/// All that is linked.
Elements elementsOf(std::string const& file);

/// The form in which names are compared, as far as ASCII goes.
std::u16string upperName(std::u16string name);

/// The unsigned number of so many bytes, as far as there are any.
std::uint64_t numberIn(std::string const& bytes, std::size_t at, std::size_t size = 4);

}  // namespace velk::test
