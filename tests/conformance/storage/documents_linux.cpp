#include <algorithm>

#include "conformance/storage/sample_documents.h"

// A change that is taken back leaves documents of other programs as they were.

namespace {

using namespace velk::test;

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

void changeAndChangeBack(FilePlace const& place, SampleDocument const& document) {
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
    auto const all = sampleDocuments();
    if (all.empty()) GTEST_SKIP() << "VELK_DOCUMENTS names no folder of documents";
    for (auto const& document : all) {
        SCOPED_TRACE(document.file.filename());
        FilePlace const place;
        document.copyTo(place);
        document.isDamaged ? readAndChangeDamaged(place) : changeAndChangeBack(place, document);
    }
}

}  // namespace
