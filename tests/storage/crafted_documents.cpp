#include "storage/crafted_documents.h"

#include "conformance/storage_properties/set_bytes.h"
#include "storage/crafted_file.h"
#include "support/data_table.h"

namespace velk::test {
namespace {

/// So many bytes that follow from a number, as SIZE*NUMBER, or a set.
std::string contentOf(std::string const& notation) {
    std::size_t const times = notation.find('*');
    if (times == notation.npos || notation.find('{') != notation.npos) return setBytes(notation);
    std::string bytes(std::stoul(notation), 0);
    auto const seed = std::stoul(notation.substr(times + 1));
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + i / 251 + seed);
    }
    return bytes;
}

using Bases = std::map<std::string, std::string>;

/// Elements between bars: `name=content`, `name/` for a storage, `storage/name=`
/// for what is in the last one of the name, `name:TYPE=` for another type,
/// `(base)` for those of another row, `(tables)` for more tables than the header
/// has places for.
void addElements(CraftedFile& file, std::string const& notation, Bases const& bases) {
    for (std::string const& element : partsOf(notation, '|')) {
        if (element == "(tables)") {
            file.haveTables(file.sectorSize() == 512 ? 240 : 120);
        } else if (element.starts_with('(')) {
            addElements(file, bases.at(element), bases);
        } else {
            std::size_t const equals = element.find('=');
            auto name = element.substr(0, equals);
            unsigned type = CraftedFile::stream;
            if (std::size_t const colon = name.find(':'); colon != name.npos) {
                type = static_cast<unsigned>(std::stoul(name.substr(colon + 1)));
                name.resize(colon);
            }
            if (name.ends_with('/')) {
                type = CraftedFile::storage;
                name.pop_back();
            }
            std::size_t parent = 0;
            if (std::size_t const slash = name.find('/'); slash != name.npos) {
                parent = file.lastStorage(elementName(name.substr(0, slash)));
                name.erase(0, slash + 1);
            }
            auto const bytes = equals == element.npos ? "" : contentOf(element.substr(equals + 1));
            file.add(elementName(name), bytes, type, parent);
        }
    }
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

std::vector<Document> craftedDocuments() {
    std::vector<Document> documents;
    Bases bases;
    for (DataRow const& row : rowsOf("storage/documents.tsv")) {
        auto const& name = row["name"];
        if (name.starts_with('(')) bases[name] = row["elements"];
        if (name.starts_with('(')) continue;
        for (std::size_t const sectorSize : {std::size_t{512}, std::size_t{4096}}) {
            CraftedFile file(sectorSize);
            addElements(file, row["elements"], bases);
            documents.push_back({name + std::to_string(sectorSize), file.build(row["damage"]),
                                 refusals(row["refused"])});
        }
    }
    documents.front().isThorough = true;
    return documents;
}

}  // namespace velk::test
