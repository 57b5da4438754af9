/// Documents of others: sound ones, damaged ones and such as hardly anybody writes.
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <windows.h>

namespace velk::test {

struct Document {
    std::string name;
    std::string bytes;
    /// By the names of steps, what refuses them; the others succeed.
    std::map<std::string, HRESULT> refused;
    /// Nobody says what becomes of the steps.
    bool isSample = false;
    /// Every place of a failure is tried, and not only some.
    bool isThorough = false;
};

/// What the test's output calls it.
inline void PrintTo(Document const& document, std::ostream* out) {
    *out << document.name;
}

/// Put together byte by byte.
std::vector<Document> craftedDocuments();

/// Those in the folder that VELK_DOCUMENTS names; none when it names none.
std::vector<Document> sampleDocuments();

}  // namespace velk::test
