#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "storage/documents.h"

namespace velk::test {

std::vector<Document> sampleDocuments() {
    char const* const folder = std::getenv("VELK_DOCUMENTS");
    std::vector<Document> documents;
    if (folder == nullptr) return documents;
    for (auto const& entry : std::filesystem::directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        documents.push_back({entry.path().filename().string(),
                             std::string(std::istreambuf_iterator<char>(file), {}),
                             {},
                             true});
    }
    std::ranges::sort(documents, {}, &Document::name);
    return documents;
}

}  // namespace velk::test
