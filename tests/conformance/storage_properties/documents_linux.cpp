#include <algorithm>
#include <optional>

#include "conformance/storage/sample_documents.h"
#include "conformance/storage_properties/property_set_file.h"

// A property that is changed and changed back leaves all others of documents of
// other programs as they were.

namespace {

using namespace velk::test;

/// The bytes of each property in a stream, by the number of its section, its id,
/// and how many of that id came before.
struct PropertyPlace {
    std::size_t section;
    PROPID id;
    std::size_t before;
    // The check takes the comparison's 0 for a pointer.
    auto operator<=>(PropertyPlace const&) const = default;  // NOLINT(modernize-use-nullptr)
};
using RawProperties = std::map<PropertyPlace, std::string>;

ULONG numberAt(std::string const& bytes, std::size_t offset) {
    ULONG number = 0;
    if (offset + sizeof number <= bytes.size()) {
        std::memcpy(&number, bytes.data() + offset, sizeof number);
    }
    return number;
}

/// What makes no sense as a section counts as one property without an id.
constexpr PROPID wholeSection = 0xFFFFFFFF;

void addSection(std::string const& bytes, std::size_t begin, std::size_t section,
                RawProperties& all) {
    std::size_t const end = begin + numberAt(bytes, begin);
    ULONG const count = numberAt(bytes, begin + 4);
    if (begin + 8 + std::size_t{8} * count > bytes.size()) {
        std::string whole = bytes.substr(std::min(begin, bytes.size()));
        whole.resize(whole.find_last_not_of('\0') + 1);
        all[{section, wholeSection, 0}] = std::move(whole);
        return;
    }
    auto const startOf = [&](std::size_t i) { return begin + numberAt(bytes, begin + 12 + 8 * i); };
    std::vector<std::size_t> starts{end};
    for (std::size_t i = 0; i < count; ++i) starts.push_back(startOf(i));
    std::sort(starts.begin(), starts.end());
    std::map<PROPID, std::size_t> seen;
    for (std::size_t i = 0; i < count; ++i) {
        PROPID const id = numberAt(bytes, begin + 8 + 8 * i);
        std::size_t const start = startOf(i);
        auto const next = std::upper_bound(starts.begin(), starts.end(), start);
        if (next == starts.end() || start >= bytes.size()) continue;
        std::string property = bytes.substr(start, *next - start);
        // Not every program pads its properties.
        property.resize((property.size() + 3) / 4 * 4);
        all[{section, id, seen[id]++}] = std::move(property);
    }
}

RawProperties rawProperties(std::string const& bytes) {
    RawProperties all;
    ULONG const sections = std::min<ULONG>(numberAt(bytes, 24), 2);
    for (ULONG i = 0; i < sections; ++i) {
        addSection(bytes, numberAt(bytes, 28 + 20 * i + 16), i, all);
    }
    return all;
}

/// Where the properties of a set stand.
struct SetPlace {
    FMTID id;
    OLECHAR const* stream;
    std::size_t usualSection;
};
constexpr SetPlace places[] = {{summarySet, OLESTR("\5SummaryInformation"), 0},
                               {documentSet, OLESTR("\5DocumentSummaryInformation"), 0},
                               {customSet, OLESTR("\5DocumentSummaryInformation"), 1}};

/// The number of the set's section; some programs write ids that nobody knows,
/// or have the sections in another order.
std::size_t sectionOf(std::string const& bytes, SetPlace const& set) {
    for (std::size_t i = 0; i < 2; ++i) {
        std::size_t const at = 28 + 20 * i;
        if (at + sizeof set.id > bytes.size() || i >= numberAt(bytes, 24)) break;
        if (std::memcmp(bytes.data() + at, &set.id, sizeof set.id) == 0) return i;
    }
    return set.usualSection;
}

/// The first number or text of a set.
std::optional<PROPID> propertyToChange(PropertySet const& set) {
    for (auto const& [id, listed] : listing(set)) {
        if (listed.type == VT_I4 || listed.type == VT_LPSTR || listed.type == VT_LPWSTR) return id;
    }
    return {};
}

PROPVARIANT otherThan(PROPVARIANT const& value) {
    static char narrow[] = "another text";
    static OLECHAR wide[] = OLESTR("another text");
    PROPVARIANT other = value;
    if (value.vt == VT_I4) other.lVal = ~value.lVal;
    if (value.vt == VT_LPSTR) other.pszVal = narrow;
    if (value.vt == VT_LPWSTR) other.pwszVal = wide;
    return other;
}

void putAndCommit(FilePlace const& place, REFFMTID id, PROPID property, PROPVARIANT const& value) {
    auto const root = place.open();
    auto const set = openSet(root, id, change);
    EXPECT_EQ(put(set, byId(property), value), S_OK);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
}

/// Everything but the property is what it was.
void expectOnlyChange(FilePlace const& place, Content expected, SetPlace const& set,
                      PROPID property) {
    auto now = contentOf(place);
    Path const stream{set.stream};
    auto before = rawProperties(expected.at(stream).bytes);
    auto after = rawProperties(now.at(stream).bytes);
    EXPECT_FALSE(before.empty());
    PropertyPlace const changed{sectionOf(expected.at(stream).bytes, set), property, 0};
    before.erase(changed);
    EXPECT_EQ(after.erase(changed), 1U);
    EXPECT_TRUE(before == after);
    expected.erase(stream);
    now.erase(stream);
    EXPECT_TRUE(now == expected);
}

/// False for a set that has nothing to change.
bool changeAndChangeBack(FilePlace const& place, SetPlace const& where) {
    PropVariant original;
    std::optional<PROPID> property;
    {
        auto const root = place.open(look);
        PropertySet set;
        if (FAILED(setsOf(root)->Open(where.id, look, set.put()))) return false;
        property = propertyToChange(set);
        if (!property) return false;
        EXPECT_EQ(get(set, byId(*property), original), S_OK);
    }
    auto const before = contentOf(place);
    putAndCommit(place, where.id, *property, otherThan(original.get()));
    expectOnlyChange(place, before, where, *property);
    putAndCommit(place, where.id, *property, original.get());
    expectOnlyChange(place, before, where, *property);
    return true;
}

TEST(PropertySetsOfOthers, SurviveAChangeTakenBack) {
    auto const all = sampleDocuments();
    if (all.empty()) GTEST_SKIP() << "VELK_DOCUMENTS names no folder of documents";
    int changed = 0;
    for (auto const& document : all) {
        SCOPED_TRACE(document.file.filename());
        if (document.isDamaged) continue;
        FilePlace const place;
        document.copyTo(place);
        for (auto const& set : places) changed += changeAndChangeBack(place, set);
    }
    // Most documents have two or three.
    EXPECT_GT(changed, static_cast<int>(all.size()));
    RecordProperty("changed_sets", changed);
}

}  // namespace
