#include "support/data_table.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include <gtest/gtest.h>

#include "support/expected_difference.h"

namespace velk::test {
namespace {

constexpr std::string_view notRun = "(not run)";
constexpr std::string_view emptyText = "\"\"";

std::string contentOf(std::string const& name) {
    std::ifstream file(VELK_TEST_DATA + name, std::ios::binary);
    if (!file) throw std::runtime_error("no file tests/data/" + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

void keepReceived(std::string const& name, std::string const& text) {
    std::filesystem::path const path = VELK_RECEIVED_DATA + name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> splitAt(char separator, std::string const& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

void appendUtf8(std::string& text, unsigned unit) {
    if (unit >= 0x800) {
        text += static_cast<char>(0xE0 | unit >> 12);
        text += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (unit & 0x3F));
    } else if (unit >= 0x80) {
        text += static_cast<char>(0xC0 | unit >> 6);
        text += static_cast<char>(0x80 | (unit & 0x3F));
    } else {
        text += static_cast<char>(unit);
    }
}

std::string unescaped(std::string_view cell) {
    std::string text;
    while (!cell.empty()) {
        std::size_t length = cell.size() > 1 && cell[0] == '\\' ? 2 : 1;
        char const sign = cell[length - 1];
        if (length == 1) {
            text += sign;
        } else if (sign == 'u' && cell.size() >= 6) {
            length = 6;
            appendUtf8(text, static_cast<unsigned>(
                                 std::stoul(std::string(cell.substr(2, 4)), nullptr, 16)));
        } else {
            constexpr std::string_view signs = "nt0", meanings("\n\t\0", 3);
            auto const place = signs.find(sign);
            text += place == std::string_view::npos ? sign : meanings[place];
        }
        cell.remove_prefix(length);
    }
    return text;
}

std::string escaped(std::string const& text) {
    std::string cell;
    for (char const sign : text) {
        constexpr std::string_view signs("\n\t\0\\", 4), letters = "nt0\\";
        auto const place = signs.find(sign);
        if (place == std::string_view::npos) {
            cell += sign;
        } else {
            cell += '\\';
            cell += letters[place];
        }
    }
    return cell;
}

/// A table as its lines, so that single cells can be written anew.
class Table {
  public:
    explicit Table(std::string name) : name_(std::move(name)) {
        for (auto const& line : splitAt('\n', contentOf(name_))) {
            lines_.push_back(splitAt('\t', line));
            if (line.empty() || line[0] == '#') continue;
            if (titles_.empty()) {
                titles_ = lines_.back();
                continue;
            }
            if (lines_.back().size() > titles_.size())
                throw std::runtime_error(place(lines_.size() - 1) + ": more cells than titles");
            rows_.push_back(lines_.size() - 1);
        }
    }

    std::vector<std::size_t> const& rows() const noexcept { return rows_; }

    DataRow row(std::size_t line) const {
        std::map<std::string, std::string, std::less<>> cells;
        for (std::size_t i = 0; i < titles_.size(); ++i)
            cells[titles_[i]] = i < lines_[line].size() ? unescaped(lines_[line][i]) : "";
        return {place(line), std::move(cells)};
    }

    void put(std::size_t line, std::string_view column, std::string const& text) {
        auto& cells = lines_[line];
        for (std::size_t i = 0; i < titles_.size(); ++i) {
            if (titles_[i] != column) continue;
            if (cells.size() <= i) cells.resize(i + 1);
            cells[i] = escaped(text);
        }
        while (!cells.empty() && cells.back().empty()) cells.pop_back();
    }

    std::string text() const {
        std::string all;
        for (auto const& line : lines_) {
            for (std::size_t i = 0; i < line.size(); ++i) all += (i ? "\t" : "") + line[i];
            all += '\n';
        }
        return all;
    }

  private:
    std::string place(std::size_t line) const {
        return "tests/data/" + name_ + ":" + std::to_string(line + 1);
    }

    std::string name_;
    std::vector<std::vector<std::string>> lines_;
    std::vector<std::string> titles_;
    std::vector<std::size_t> rows_;
};

/// The column of the running system, or nothing where it is to answer as published.
std::string ownColumn(DataRow const& row) {
    std::string column;
    if (runsOn(System::wine8)) column = "wine8";
    if (runsOn(System::wine10)) column = "wine10";
    return row.has(column) ? column : std::string();
}

void expectRow(Table& table, std::size_t line,
               std::function<std::string(DataRow const&)> const& answer) {
    DataRow const row = table.row(line);
    auto const textIn = [](std::string const& cell) { return cell == emptyText ? "" : cell; };
    auto const published = textIn(row["expected"]);
    auto const column = ownColumn(row);
    std::string const cell = column.empty() ? std::string() : row[column];
    if (cell == notRun) return;
    bool const differs = !cell.empty();
    auto const recorded = textIn(cell);

    testing::ScopedTrace const trace("", 0, row.place());
    std::string const actual = answer(row);
    EXPECT_EQ(actual, differs ? recorded : published);
    if (differs) {
        countDifference(row["why"]);
        EXPECT_NE(recorded, published) << "marked as a difference, and is none";
    }
    if (actual != published)
        table.put(line, column.empty() ? "expected" : column, actual.empty() ? "\"\"" : actual);
    else if (!column.empty())
        table.put(line, column, "");
}

}  // namespace

std::string const& DataRow::operator[](std::string_view column) const {
    auto const cell = cells_.find(column);
    if (cell == cells_.end())
        throw std::out_of_range(place_ + ": no column " + std::string(column));
    return cell->second;
}

std::vector<DataRow> rowsOf(std::string const& name) {
    Table const table(name);
    std::vector<DataRow> rows;
    for (std::size_t const line : table.rows()) rows.push_back(table.row(line));
    return rows;
}

void expectTable(std::string const& name,
                 std::function<std::string(DataRow const&)> const& answer) {
    Table table(name);
    ASSERT_FALSE(table.rows().empty()) << "no rows in " << name;
    for (std::size_t const line : table.rows()) expectRow(table, line, answer);
    keepReceived(name, table.text());
}

void expectApproved(std::string const& name, std::string const& text) {
    keepReceived(name, text);
    EXPECT_EQ(text, contentOf(name)) << "renew it with scripts/approve-baselines";
}

}  // namespace velk::test
