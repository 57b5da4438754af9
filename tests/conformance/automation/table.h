/// Tables of expectations, one row a line.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::test {

using Row = std::vector<std::string>;

/// Calls `check` with the cells of each line of `table`. Cells are set apart
/// by '|', and blanks around them do not count. Empty lines and those that begin with '#' are left
/// out. Returns how many rows there were.
std::size_t forEachRow(std::string_view table, std::function<void(Row const&)> const& check);

/// Compares a result with a cell. A '~' before the expectation marks one that
/// Wine does not meet, "~8:" and "~10:" one that only its versions before or
/// from 10 on do not. '.' stands for "mismatch", '^' for "overflow" and ''
/// for an empty text.
void expectCell(std::string expected, std::string const& actual, std::string const& what);

}  // namespace velk::test
