#include "table.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "support/expected_difference.h"

namespace velk::test {
namespace {

std::string_view trimmed(std::string_view text) {
    std::size_t const first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace

std::size_t forEachRow(std::string_view table, std::function<void(Row const&)> const& check) {
    std::size_t rows = 0;
    while (!table.empty()) {
        std::size_t const end = std::min(table.find('\n'), table.size());
        std::string_view line = table.substr(0, end);
        table.remove_prefix(std::min(end + 1, table.size()));
        if (trimmed(line).empty() || line.starts_with("#")) continue;
        Row row;
        for (;;) {
            std::size_t const bar = std::min(line.find('|'), line.size());
            row.emplace_back(trimmed(line.substr(0, bar)));
            if (bar == line.size()) break;
            line.remove_prefix(bar + 1);
        }
        ++rows;
        check(row);
    }
    return rows;
}

void expectCell(std::string expected, std::string const& actual, std::string const& what) {
    struct Mark {
        char const* text;
        System system;
    };
    // The longer ones first.
    constexpr Mark marks[] = {
        {"~8:", System::wine8}, {"~10:", System::wine10}, {"~", System::wine}};
    auto const* const marked = std::ranges::find_if(
        marks, [&](Mark const& mark) { return expected.starts_with(mark.text); });
    bool const isMarked = marked != std::end(marks);
    if (isMarked) expected.erase(0, std::string_view(marked->text).size());
    if (expected == ".") expected = "mismatch";
    if (expected == "^") expected = "overflow";
    if (expected == "''") expected.clear();
    auto const compare = [&] { EXPECT_EQ(actual, expected) << what; };
    if (isMarked) {
        expectDifference(marked->system, what, compare);
    } else {
        compare();
    }
}

}  // namespace velk::test
