/// Calls of host objects as cells of a table write them.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/data_table.h"
#include "support/host_calls.h"

namespace velk::test {

/// Named objects for `@name`; an unknown name throws std::out_of_range.
using NamedValues = std::map<std::string, std::function<mzComVariantC()>>;

/// One value: `5`, `0x2000`, `2.5`, `"text"`, `empty`, `true`, `@name`, and behind
/// `&` a variable that holds it.
inline mzComVariantC valueOfCell(std::string const& cell, NamedValues const& names) {
    if (cell[0] == '&') return mzComVariantC::createSymbolRef(valueOfCell(cell.substr(1), names));
    if (cell[0] == '@') return names.at(cell.substr(1))();
    if (cell[0] == '"') return cell.substr(1, cell.size() - 2).c_str();
    if (cell == "empty") return {};
    if (cell == "true") return true;
    if (cell.find('.') != std::string::npos) return std::stod(cell);
    return static_cast<int>(std::stol(cell, nullptr, 0));
}

/// The values of a cell, set apart by ", ".
inline mzComVariantArrayC valuesOfCell(std::string cell, NamedValues const& names) {
    mzComVariantArrayC values;
    while (!cell.empty()) {
        auto const end = cell.find(", ", cell[0] == '"' ? cell.find('"', 1) : 0);
        values.append(valueOfCell(cell.substr(0, end), names));
        cell.erase(0, end == std::string::npos ? end : end + 2);
    }
    return values;
}

inline unsigned kindOfCell(std::string const& cell) {
    if (cell == "get") return mzCallPropertyGet;
    return cell == "put" ? mzCallPropertyPut : mzCallMethod;
}

/// Makes the call of a row's columns `member`, `kind` and `args`: how it ended,
/// and what each variable holds afterwards, behind a semicolon.
inline std::string callOfRow(mzIDispatch* object, DataRow const& row,
                             NamedValues const& names = {}) {
    auto const arguments = valuesOfCell(row["args"], names);
    HostOutcome outcome;
    outcome.code = object->invokeByName(row["member"].c_str(), kindOfCell(row["kind"]), arguments,
                                        outcome.result, outcome.exception);
    std::string text = outcome.text();
    for (int i = 0; i < arguments.size(); ++i) {
        if (arguments.at(i).isVariable()) text += "; " + describe(arguments.at(i).skipVariable());
    }
    return text;
}

}  // namespace velk::test
