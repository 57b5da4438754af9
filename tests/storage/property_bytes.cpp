#include "storage/property_bytes.h"

#include <algorithm>
#include <vector>

#include "storage/compound_reader.h"

namespace velk::test {
namespace {

constexpr PROPID wholeSection = 0xFFFFFFFF;

void addSection(std::string const& stream, std::size_t section,
                std::map<PropertyPlace, std::string>& all) {
    auto const beginOf = [&](std::size_t i) { return numberIn(stream, 28 + 20 * i + 16); };
    std::size_t const begin = beginOf(section), sections = numberIn(stream, 24);
    std::string bytes = stream;
    // Where one makes no sense, it ends where the next one begins.
    if (section == 0 && sections > 1 && beginOf(1) > begin) bytes.resize(beginOf(1));
    std::size_t const end = begin + numberIn(bytes, begin);
    std::size_t const count = numberIn(bytes, begin + 4);
    if (begin + 8 + 8 * count > bytes.size()) {
        std::string whole = bytes.substr(std::min(begin, bytes.size()));
        whole.resize(whole.find_last_not_of('\0') + 1);
        all[{section, wholeSection, 0}] = std::move(whole);
        return;
    }
    auto const startOf = [&](std::size_t i) { return begin + numberIn(bytes, begin + 12 + 8 * i); };
    std::vector<std::size_t> starts{end};
    for (std::size_t i = 0; i < count; ++i) starts.push_back(startOf(i));
    std::ranges::sort(starts);
    std::map<PROPID, std::size_t> seen;
    for (std::size_t i = 0; i < count; ++i) {
        auto const id = static_cast<PROPID>(numberIn(bytes, begin + 8 + 8 * i));
        std::size_t const start = startOf(i);
        auto const next = std::ranges::upper_bound(starts, start);
        if (next == starts.end() || start >= bytes.size()) continue;
        std::string property = bytes.substr(start, *next - start);
        // Not every program pads its properties.
        property.resize((property.size() + 3) / 4 * 4);
        all[{section, id, seen[id]++}] = std::move(property);
    }
}

}  // namespace

std::map<PropertyPlace, std::string> propertiesIn(std::string const& stream) {
    std::map<PropertyPlace, std::string> all;
    std::size_t const sections = std::min<std::size_t>(numberIn(stream, 24), 2);
    for (std::size_t i = 0; i < sections; ++i) {
        addSection(stream, i, all);
    }
    return all;
}

}  // namespace velk::test
