/// Documents that other programs wrote, in a folder that the tests are told of.
#pragma once

#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "conformance/storage/storage_file.h"

namespace velk::test {

/// One line of the folder's list.
struct SampleDocument {
    std::filesystem::path file;
    bool isDamaged = false;
    std::size_t streams = 0;

    /// A copy that may be changed.
    void copyTo(FilePlace const& place) const;
};

/// All of the folder that VELK_DOCUMENTS names; none when it names none.
std::vector<SampleDocument> sampleDocuments();

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
void collect(IStorage& storage, Path const& path, Content& content, int& failures);

/// All that is in the file; what cannot be read fails the test.
Content contentOf(FilePlace const& place);

}  // namespace velk::test
