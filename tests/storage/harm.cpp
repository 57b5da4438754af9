#include "storage/harm.h"

#include <algorithm>
#include <vector>

#include "storage/property_bytes.h"

namespace velk::test {
namespace {

std::string narrow(std::u16string const& text) {
    std::string made;
    for (char16_t const unit : text) {
        made += unit >= 0x20 && unit < 0x7F ? static_cast<char>(unit) : '?';
    }
    return made;
}

std::u16string upper(std::u16string text) {
    for (auto& unit : text) unit -= unit >= u'a' && unit <= u'z' ? 32 : 0;
    return text;
}

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

}  // namespace

bool isSharedName(Elements const& elements, std::u16string const& path) {
    auto const name = upper(path);
    return std::ranges::count_if(elements,
                                 [&](auto const& each) { return upper(each.first) == name; }) > 1;
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
            harm += "lost or changed: " + narrow(path) + "\n";
            continue;
        }
        if (element.isFound && !kept->second.isFound) harm += "hidden: " + narrow(path) + "\n";
        present.erase(kept);
    }
    for (auto const& [path, element] : present) harm += "new: " + narrow(path) + "\n";
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
