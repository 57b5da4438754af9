#include "conformance/storage/sample_documents.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace velk::test {

void SampleDocument::copyTo(FilePlace const& place) const {
    ASSERT_TRUE(std::filesystem::copy_file(file, place.file()));
    std::filesystem::permissions(place.file(), std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
}

std::vector<SampleDocument> sampleDocuments() {
    char const* const variable = std::getenv("VELK_DOCUMENTS");
    if (variable == nullptr) return {};
    std::filesystem::path const folder = variable;
    constexpr std::size_t nameColumn = 0, purposeColumn = 5, readerColumn = 6;
    std::ifstream list(folder / "INDEX.tsv");
    std::vector<SampleDocument> all;
    std::string line;
    std::getline(list, line);
    while (std::getline(list, line)) {
        std::vector<std::string> columns;
        std::istringstream text(line);
        for (std::string column; std::getline(text, column, '\t');) columns.push_back(column);
        if (columns.size() <= readerColumn) continue;
        SampleDocument document{folder / columns[nameColumn]};
        document.isDamaged = columns[purposeColumn].rfind("fuzzer-found", 0) == 0;
        std::string const key = "\"streams\": ";
        auto const at = columns[readerColumn].find(key);
        if (at != std::string::npos) {
            document.streams = std::stoul(columns[readerColumn].substr(at + key.size()));
        }
        all.push_back(document);
    }
    return all;
}

void collect(IStorage& storage, Path const& path, Content& content, int& failures) {
    Element& own = content[path];
    failures += FAILED(storage.Stat(&own.status, STATFLAG_NONAME));
    velk::com::ComPtr<IEnumSTATSTG> elements;
    if (FAILED(storage.EnumElements(0, nullptr, 0, elements.put()))) {
        ++failures;
        return;
    }
    STATSTG status{};
    while (elements->Next(1, &status, nullptr) == S_OK) {
        Path inner = path;
        inner.emplace_back(status.pwcsName);
        CoTaskMemFree(std::exchange(status.pwcsName, nullptr));
        if (status.type == STGTY_STORAGE) {
            Storage opened;
            HRESULT const code =
                storage.OpenStorage(inner.back().c_str(), nullptr, look, nullptr, 0, opened.put());
            FAILED(code) ? void(++failures) : collect(*opened.get(), inner, content, failures);
            continue;
        }
        Stream stream;
        Element& element = content[inner];
        element.status = status;
        element.bytes.resize(static_cast<std::size_t>(
            std::min<ULONGLONG>(status.cbSize.QuadPart, ULONGLONG{1} << 24)));
        ULONG done = 0;
        bool const isRead =
            SUCCEEDED(storage.OpenStream(inner.back().c_str(), nullptr, look, 0, stream.put())) &&
            SUCCEEDED(stream->Read(element.bytes.data(), static_cast<ULONG>(element.bytes.size()),
                                   &done)) &&
            done == element.bytes.size();
        failures += !isRead;
    }
}

Content contentOf(FilePlace const& place) {
    Content content;
    int failures = 0;
    auto const root = place.open(look);
    if (root) collect(*root.get(), {}, content, failures);
    EXPECT_EQ(failures, 0);
    return content;
}

}  // namespace velk::test
