#include "storage/crafted_documents.h"

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "support/data_table.h"

namespace velk::test {
namespace {

std::vector<std::string> partsOf(std::string const& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream all(text);
    for (std::string part; std::getline(all >> std::ws, part, separator);) parts.push_back(part);
    return parts;
}

/// `step, step: code; step: code`.
std::map<std::string, std::string> refusals(std::string const& notation) {
    std::map<std::string, std::string> all;
    for (std::string const& group : partsOf(notation, ';')) {
        std::size_t const colon = group.find(':');
        for (auto const& step : partsOf(group.substr(0, colon), ',')) {
            all[step] = group.substr(colon + 2);
        }
    }
    return all;
}

}  // namespace

std::string craftedFile(std::string const& name) {
    std::ifstream file(VELK_CRAFTED_FILES + name, std::ios::binary);
    if (!file) throw std::runtime_error("no crafted file " + name);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<Document> craftedDocuments() {
    std::vector<Document> documents;
    for (DataRow const& row : rowsOf("storage/documents.tsv")) {
        if (row["name"].starts_with('(')) continue;
        for (auto const* const sectorSize : {"512", "4096"}) {
            auto const name = row["name"] + sectorSize;
            documents.push_back({name, craftedFile("documents/" + name), refusals(row["refused"])});
        }
    }
    documents.front().isThorough = true;
    return documents;
}

}  // namespace velk::test
