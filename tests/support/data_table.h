/// Tables of expectations as files: a line of titles, then one row a line,
/// cells set apart by tabs.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace velk::test {

/// One row. Cells know `\n`, `\t`, `\0`, `\\` and `\uXXXX`.
class DataRow {
  public:
    DataRow(std::string place, std::map<std::string, std::string, std::less<>> cells)
        : place_(std::move(place)), cells_(std::move(cells)) {}

    /// The cell of that column. Throws std::out_of_range where the table has
    /// no such column.
    std::string const& operator[](std::string_view column) const;
    /// Whether the table has that column.
    bool has(std::string_view column) const { return cells_.contains(column); }
    /// File and line.
    std::string const& place() const noexcept { return place_; }

  private:
    std::string place_;
    std::map<std::string, std::string, std::less<>> cells_;
};

/// The rows of tests/data/`name`. Empty lines and those that begin with '#' do
/// not count. Throws std::runtime_error where the file cannot be read or a row
/// has more cells than titles; cells that a row leaves out at its end are empty.
std::vector<DataRow> rowsOf(std::string const& name);

/// Holds a table of results to what `answer` gives for each row.
///
/// The column `expected` has the published result. `wine8` and `wine10`, where
/// a table has them, hold what those answer instead (`""` for an empty text);
/// an empty cell means the published result, `(not run)` leaves the row out
/// there. A row with another answer names the difference in its column `why`,
/// an `id` of tests/data/differences.tsv.
///
/// What the running system answered is kept as received text: with
/// scripts/approve-baselines it becomes the approved one.
void expectTable(std::string const& name, std::function<std::string(DataRow const&)> const& answer);

/// Fails the running test unless `text` is the approved one, tests/data/`name`.
/// Keeps it for scripts/approve-baselines.
void expectApproved(std::string const& name, std::string const& text);

}  // namespace velk::test
