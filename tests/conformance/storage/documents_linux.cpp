#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

#include "conformance/storage/storage_file.h"

// Documents that other programs wrote, in the folder that VELK_DOCUMENTS names:
// a change that is taken back leaves all of them as they were.

namespace {

using namespace velk::test;

/// One line of the folder's list.
struct Document {
    std::filesystem::path file;
    bool isDamaged = false;
    std::size_t streams = 0;
};

std::vector<Document> documents(std::filesystem::path const& folder) {
    constexpr std::size_t nameColumn = 0, purposeColumn = 5, readerColumn = 6;
    std::ifstream list(folder / "INDEX.tsv");
    std::vector<Document> all;
    std::string line;
    std::getline(list, line);
    while (std::getline(list, line)) {
        std::vector<std::string> columns;
        std::istringstream text(line);
        for (std::string column; std::getline(text, column, '\t');) columns.push_back(column);
        if (columns.size() <= readerColumn) continue;
        Document document{folder / columns[nameColumn]};
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

struct Element {
    STATSTG status{};
    std::string bytes;

    bool operator==(Element const& other) const {
        auto const same = [](auto const& one, auto const& two) {
            return std::memcmp(&one, &two, sizeof one) == 0;
        };
        return status.type == other.status.type && bytes == other.bytes &&
               status.cbSize.QuadPart == other.status.cbSize.QuadPart &&
               status.clsid == other.status.clsid &&
               status.grfStateBits == other.status.grfStateBits &&
               same(status.ctime, other.status.ctime) && same(status.mtime, other.status.mtime);
    }
};

/// The storages that lead to an element, and its own name.
using Path = std::vector<Text>;
using Content = std::map<Path, Element>;

/// All that can be read; `failures` counts what cannot.
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

std::size_t streamsIn(Content const& content) {
    return static_cast<std::size_t>(std::count_if(content.begin(), content.end(), [](auto& each) {
        return each.second.status.type == STGTY_STREAM;
    }));
}

/// Flips the bits of the byte in the middle of a stream and commits.
HRESULT flipByte(IStorage& root, Path const& path) {
    std::vector<Storage> storages;
    IStorage* parent = &root;
    HRESULT code = S_OK;
    for (std::size_t i = 0; SUCCEEDED(code) && i + 1 < path.size(); ++i) {
        Storage inner;
        code = parent->OpenStorage(path[i].c_str(), nullptr, change, nullptr, 0, inner.put());
        parent = inner.get();
        storages.push_back(std::move(inner));
    }
    Stream stream;
    if (SUCCEEDED(code)) {
        code = parent->OpenStream(path.back().c_str(), nullptr, change, 0, stream.put());
    }
    if (FAILED(code)) return code;
    STATSTG status{};
    stream->Stat(&status, STATFLAG_NONAME);
    LARGE_INTEGER middle;
    middle.QuadPart = static_cast<LONGLONG>(status.cbSize.QuadPart / 2);
    char byte = 0;
    code = stream->Seek(middle, STREAM_SEEK_SET, nullptr);
    if (SUCCEEDED(code)) code = stream->Read(&byte, 1, nullptr);
    byte = static_cast<char>(~byte);
    if (SUCCEEDED(code)) code = stream->Seek(middle, STREAM_SEEK_SET, nullptr);
    if (SUCCEEDED(code)) code = stream->Write(&byte, 1, nullptr);
    return SUCCEEDED(code) ? root.Commit(STGC_DEFAULT) : code;
}

/// The smallest stream with anything in it, and the largest one.
std::vector<Path> streamsToChange(Content const& content) {
    Content::value_type const *smallest = nullptr, *largest = nullptr;
    for (auto const& each : content) {
        std::size_t const size = each.second.bytes.size();
        if (size == 0) continue;
        if (smallest == nullptr || size < smallest->second.bytes.size()) smallest = &each;
        if (largest == nullptr || size > largest->second.bytes.size()) largest = &each;
    }
    if (smallest == nullptr) return {};
    return {smallest->first, largest->first};
}

void changeAndChangeBack(FilePlace const& place, Document const& document) {
    Content const before = contentOf(place);
    EXPECT_EQ(streamsIn(before), document.streams);
    for (Path const& path : streamsToChange(before)) {
        EXPECT_EQ(flipByte(*place.open().get(), path), S_OK);
        Content expected = before;
        char& changed = expected.at(path).bytes[expected.at(path).bytes.size() / 2];
        changed = static_cast<char>(~changed);
        EXPECT_TRUE(contentOf(place) == expected);
        EXPECT_EQ(flipByte(*place.open().get(), path), S_OK);
        EXPECT_TRUE(contentOf(place) == before);
    }
}

/// Whatever comes of it: it ends, and nothing is left behind.
void readAndChangeDamaged(FilePlace const& place) {
    Content content;
    int failures = 0;
    Storage root;
    if (FAILED(place.tryOpen(look, root))) return;
    collect(*root.get(), {}, content, failures);
    root = {};
    for (Path const& path : streamsToChange(content)) {
        Storage changed;
        if (SUCCEEDED(place.tryOpen(change, changed))) flipByte(*changed.get(), path);
    }
}

TEST(CompoundFile, DocumentsOfOthersSurviveAChangeTakenBack) {
    char const* const folder = std::getenv("VELK_DOCUMENTS");
    if (folder == nullptr) GTEST_SKIP() << "VELK_DOCUMENTS names no folder of documents";
    auto const all = documents(folder);
    ASSERT_FALSE(all.empty());
    for (auto const& document : all) {
        SCOPED_TRACE(document.file.filename());
        FilePlace const place;
        ASSERT_TRUE(std::filesystem::copy_file(document.file, place.file()));
        std::filesystem::permissions(place.file(), std::filesystem::perms::owner_write,
                                     std::filesystem::perm_options::add);
        document.isDamaged ? readAndChangeDamaged(place) : changeAndChangeBack(place, document);
    }
}

}  // namespace
