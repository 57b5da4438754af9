/// Documents of others: sound ones, damaged ones and such as hardly anybody writes.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace velk::test {

struct Document {
    std::string name;
    std::string bytes;
    /// By the names of steps, what refuses them, as codeName() has it; the
    /// others succeed.
    std::map<std::string, std::string> refused;
    /// Nobody says what becomes of the steps.
    bool isSample = false;
    /// Every place of a failure is tried, and not only some.
    bool isThorough = false;
};

/// What the test's output calls it.
inline void PrintTo(Document const& document, std::ostream* out) {
    *out << document.name;
}

/// A file that make_documents.py has put together.
std::string craftedFile(std::string const& name);

/// Its documents, with sectors of 512 and of 4096 bytes, as the rows of
/// tests/data/storage/documents.tsv say.
std::vector<Document> craftedDocuments();

}  // namespace velk::test
