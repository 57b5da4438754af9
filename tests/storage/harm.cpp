#include "storage/harm.h"

#include <algorithm>
#include <map>
#include <vector>

#include "com/utf.h"

namespace velk::test {
namespace {

/// What the file did not have before may be zeros.
bool isKept(Element const& former, Element const& now) {
    std::size_t const had = former.bytes.size();
    return former.entry == now.entry && now.bytes.starts_with(former.bytes) &&
           now.bytes.find_first_not_of('\0', had) == std::string::npos &&
           (now.bytes.size() == had || had < numberIn(former.entry, 120));
}

bool isChangedBy(Step const& step, Text const& stream, std::u16string const& path) {
    // To the layer, names end at a zero.
    auto const named = path.substr(0, path.find(u'\0'));
    std::vector<std::u16string> changed{step.changes == nullptr ? stream : step.changes};
    if (step.changes == nullptr) changed.emplace_back(renamedStream);
    return std::ranges::any_of(changed, [&](std::u16string const& name) {
        auto const whole = name.empty() ? name : u'/' + name;
        return named == whole || (!whole.empty() && path.starts_with(whole + u'/'));
    });
}

/// The number of the section, the id, and how many of that id came before.
struct PropertyPlace {
    std::size_t section;
    PROPID id;
    std::size_t before;
    // The check takes the comparison's 0 for a pointer.
    auto operator<=>(PropertyPlace const&) const = default;  // NOLINT(modernize-use-nullptr)
};

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

/// The bytes of each property. What makes no sense as a section is one without
/// an id.
std::map<PropertyPlace, std::string> propertiesIn(std::string const& stream) {
    std::map<PropertyPlace, std::string> all;
    std::size_t const sections = std::min<std::size_t>(numberIn(stream, 24), 2);
    for (std::size_t i = 0; i < sections; ++i) addSection(stream, i, all);
    return all;
}

}  // namespace

bool isSharedName(Elements const& elements, std::u16string const& path) {
    auto const name = upperName(path);
    return std::ranges::count_if(
               elements, [&](auto const& each) { return upperName(each.first) == name; }) > 1;
}

Text biggestStream(Elements const& elements) {
    std::multimap<std::size_t, Text> bySize;
    for (auto const& [path, element] : elements) {
        bool const isOne = element.isStream() && path.rfind(u'/') == 0 && path.size() > 1 &&
                           path[1] != 5 && path.find(u'\0') == std::u16string::npos;
        if (isOne && !isSharedName(elements, path)) {
            bySize.insert({element.bytes.size(), path.substr(1)});
        }
    }
    return bySize.empty() ? Text() : bySize.rbegin()->second;
}

std::string harmBy(Step const& step, Text const& stream, std::string const& before,
                   std::string const& now) {
    auto former = elementsOf(before), present = elementsOf(now);
    auto const isChanged = [&](auto const& each) { return isChangedBy(step, stream, each.first); };
    std::erase_if(former, isChanged);
    std::erase_if(present, isChanged);
    std::string harm;
    for (auto const& each : former) {
        auto const& [path, element] = each;
        auto const [first, last] = present.equal_range(path);
        auto const kept = std::find_if(first, last, [&](auto const& candidate) {
            return isKept(each.second, candidate.second);
        });
        if (kept == last) {
            harm += "lost or changed: " + com::toUtf8(path) + "\n";
            continue;
        }
        if (element.isFound && !kept->second.isFound) harm += "hidden: " + com::toUtf8(path) + "\n";
        present.erase(kept);
    }
    for (auto const& [path, element] : present) harm += "new: " + com::toUtf8(path) + "\n";
    return harm;
}

std::string lostProperties(Step const& step, std::string const& original, std::string const& now) {
    if (step.changes == nullptr || step.changes[0] != 5) return {};
    auto const path = std::u16string(u"/") + step.changes;
    auto const former = elementsOf(original), present = elementsOf(now);
    auto const was = former.find(path), is = present.find(path);
    if (is == present.end()) return "the set\n";
    if (was == former.end()) return {};
    bool const isSummary = step.changes[1] == u'S';
    auto const all = propertiesIn(is->second.bytes);
    std::string lost;
    for (auto const& [place, bytes] : propertiesIn(was->second.bytes)) {
        // The title; names, and the company.
        bool const isOwn = isSummary ? place.id == 2 : place.id == 0 || place.id == 15;
        auto const found = all.find(place);
        if (isOwn || (found != all.end() && found->second == bytes)) continue;
        lost += std::to_string(place.section) + ": " + std::to_string(place.id) + "\n";
    }
    return lost;
}

}  // namespace velk::test
