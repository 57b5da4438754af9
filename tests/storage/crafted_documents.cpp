#include "storage/crafted_documents.h"

#include <functional>
#include <sstream>
#include <stdexcept>

#include "com/utf.h"
#include "conformance/storage_properties/set_bytes.h"
#include "storage/crafted_file.h"
#include "support/data_table.h"

namespace velk::test {
namespace {

std::vector<std::string> partsOf(std::string const& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream all(text);
    for (std::string part; std::getline(all >> std::ws, part, separator);) {
        part.resize(part.find_last_not_of(' ') + 1);
        parts.push_back(part);
    }
    return parts;
}

std::u16string nameOf(std::string const& name) {
    if (name == "S") return u"\5SummaryInformation";
    if (name == "D") return u"\5DocumentSummaryInformation";
    return *com::fromUtf8(name);
}

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
                parent = file.lastStorage(nameOf(name.substr(0, slash)));
                name.erase(0, slash + 1);
            }
            auto const bytes = equals == element.npos ? "" : contentOf(element.substr(equals + 1));
            file.add(nameOf(name), bytes, type, parent);
        }
    }
}

/// A number, or a place in the file with what is to be added to it.
CraftedFile::Sector valueOf(CraftedFile const& file, std::string const& notation) {
    auto const words = partsOf(notation, ' ');
    auto const name = notation.substr(std::min(words[0].size() + 1, notation.size()));
    if (words[0] == "free") return CraftedFile::freeSector;
    if (words[0] == "first") return file.first(file.find(nameOf(name)));
    if (words[0] == "last") return file.last(file.find(nameOf(name)));
    if (words[0] == "number") {
        return static_cast<CraftedFile::Sector>(file.find(nameOf(name)));
    }
    std::map<std::string, CraftedFile::Sector> const places{{"directory", file.directory()},
                                                            {"table", file.table()},
                                                            {"list", file.listOfTables()},
                                                            {"small", file.smallTable()}};
    std::size_t const sign = notation.find_first_of("+-");
    auto const place = places.find(notation.substr(0, sign));
    if (place == places.end()) return static_cast<CraftedFile::Sector>(std::stoul(notation));
    int const more = sign == notation.npos ? 0 : std::stoi(notation.substr(sign));
    return place->second + static_cast<CraftedFile::Sector>(more);
}

/// Statements: `entry NAME:FIELD=value`, `next SECTOR=value`, `small next
/// SECTOR=value`, `header OFFSET=value`, `cut=NUMBER`, `more=bytes behind`.
void damage(CraftedFile& file, std::string const& notation) {
    std::map<std::string, std::size_t> const fields{
        {"type", CraftedFile::typeAt},   {"left", CraftedFile::leftAt},
        {"right", CraftedFile::rightAt}, {"child", CraftedFile::childAt},
        {"first", CraftedFile::firstAt}, {"size", CraftedFile::sizeAt}};
    for (std::string const& statement : partsOf(notation, ';')) {
        std::size_t const equals = statement.find('=');
        auto const left = statement.substr(0, equals), right = statement.substr(equals + 1);
        auto const value = [&] { return valueOf(file, right); };
        if (left.starts_with("entry ")) {
            std::size_t const colon = left.find(':');
            auto const name = left.substr(6, colon - 6);
            std::size_t const at = fields.at(left.substr(colon + 1));
            file.setEntry(name == "root" ? 0 : file.find(nameOf(name)), at, value(),
                          at == CraftedFile::typeAt ? 1 : 4);
        } else if (left.starts_with("next ")) {
            file.setNext(valueOf(file, left.substr(5)), value());
        } else if (left.starts_with("small next ")) {
            file.setSmallNext(valueOf(file, left.substr(11)), value());
        } else if (left.starts_with("header ")) {
            file.setHeader(std::stoul(left.substr(7)), value());
        } else if (left == "cut") {
            file.bytes().resize(file.bytes().size() - std::stoul(right));
        } else if (left == "more") {
            file.bytes() += right;
        } else {
            throw std::runtime_error("no such damage: " + statement);
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
            file.build();
            damage(file, row["damage"]);
            documents.push_back(
                {name + std::to_string(sectorSize), file.bytes(), refusals(row["refused"])});
        }
    }
    documents.front().isThorough = true;
    return documents;
}

}  // namespace velk::test
