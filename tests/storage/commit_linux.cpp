#include <algorithm>
#include <map>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "platform/storage/compound/compound_file.h"
#include "platform/storage/shared_object.h"
#include "storage/recorded_file.h"

// A change of a compound file counts wholly or not at all, whenever the machine
// stops and whichever step fails.

namespace {

using namespace velk::test;
using namespace velk::platform::storage;
using Content = std::map<std::u16string, std::string>;

std::string pattern(std::size_t size, unsigned seed) {
    std::string bytes(size, 0);
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 5 + i / 97 + seed);
    return bytes;
}

void put(CompoundFile& file, std::u16string_view name, std::string const& bytes) {
    auto& directory = file.directory();
    EntryId stream = directory.find(rootEntry, name);
    if (stream == noEntry) stream = directory.add(rootEntry, name, EntryType::stream);
    file.resizeStream(stream, bytes.size());
    file.writeStream(stream, 0, std::as_bytes(std::span(bytes)));
}

void drop(CompoundFile& file, std::u16string_view name) {
    EntryId const stream = file.directory().find(rootEntry, name);
    if (stream != noEntry) file.destroy(rootEntry, stream);
}

Content contentOf(FileBytes const& bytes) {
    FileRecord record{bytes, {}, -1};
    CompoundFile file(std::make_unique<RecordedFile>(record), false);
    Content all;
    for (auto const& [name, entry] : file.directory().children(rootEntry)) {
        std::string read(file.streamSize(entry), 0);
        file.readStream(entry, 0, std::as_writable_bytes(std::span(read)));
        all[file.directory().at(entry).name] = read;
    }
    return all;
}

/// A file with small and big streams, some of its sectors free.
FileBytes exampleFile(std::size_t sectorSize) {
    FileRecord record;
    {
        RecordedFile fresh(record);
        CompoundFile::create(fresh, sectorSize);
    }
    CompoundFile file(std::make_unique<RecordedFile>(record), true);
    for (char16_t name = u'a'; name <= u'j'; ++name) {
        std::size_t const number = name - u'a';
        put(file, std::u16string(1, name), pattern(300 * number * number, name));
    }
    file.commit();
    drop(file, u"h");
    drop(file, u"c");
    file.commit();
    return record.bytes;
}

void changeMuch(CompoundFile& file) {
    put(file, u"b", pattern(700, 1));
    put(file, u"j", pattern(25000, 2));
    put(file, u"i", pattern(100, 3));
    put(file, u"new", pattern(6000, 4));
    drop(file, u"e");
}

void changeLittle(CompoundFile& file) {
    put(file, u"b", pattern(300, 7));
}

struct Case {
    char const* name;
    std::size_t sectorSize;
    void (*change)(CompoundFile&);
};

class Commits : public testing::TestWithParam<Case> {
  protected:
    FileBytes const before_ = exampleFile(GetParam().sectorSize);
    Content const contentBefore_ = contentOf(before_);
    FileRecord record_{before_, {}, -1};
    Content contentAfter_;

    /// Makes the change; false when a step failed.
    bool change() {
        CompoundFile file(std::make_unique<RecordedFile>(record_), true);
        return SUCCEEDED(answer([&] {
            GetParam().change(file);
            file.commit();
        }));
    }
    void SetUp() override {
        ASSERT_TRUE(change());
        contentAfter_ = contentOf(record_.bytes);
        ASSERT_TRUE(contentBefore_ != contentAfter_);
    }
    bool isOneOfBoth(FileBytes const& bytes) const {
        Content const now = contentOf(bytes);
        return now == contentBefore_ || now == contentAfter_;
    }
};

TEST_P(Commits, StopBetweenAnyTwoSteps) {
    FileBytes file = before_;
    for (auto const& step : record_.steps) {
        if (!step.isSync()) applyStep(file, step);
        ASSERT_TRUE(isOneOfBoth(file));
    }
    EXPECT_TRUE(contentOf(file) == contentAfter_);
}

TEST_P(Commits, StopWhileWritesAreOnTheirWay) {
    std::mt19937 random(4711);
    for (int round = 0; round < 1000; ++round) {
        FileBytes file = before_;
        auto const stop = random() % (record_.steps.size() + 1);
        std::vector<FileStep const*> onTheirWay;
        for (std::size_t i = 0; i < stop; ++i) {
            auto const& step = record_.steps[i];
            if (!step.isSync()) {
                onTheirWay.push_back(&step);
                continue;
            }
            for (auto const* arrived : onTheirWay) applyStep(file, *arrived);
            onTheirWay.clear();
        }
        std::shuffle(onTheirWay.begin(), onTheirWay.end(), random);
        onTheirWay.resize(onTheirWay.empty() ? 0 : random() % (onTheirWay.size() + 1));
        for (auto const* arrived : onTheirWay) applyStep(file, *arrived);
        ASSERT_TRUE(isOneOfBoth(file)) << round;
    }
}

TEST_P(Commits, AnyStepMayFail) {
    auto const steps = static_cast<int>(record_.steps.size());
    for (int failing = 0; failing < steps; ++failing) {
        record_ = {before_, {}, failing};
        EXPECT_FALSE(change()) << failing;
        // The header is written in one piece by the medium.
        EXPECT_TRUE(failing == steps - 2 || record_.bytes == before_) << failing;
    }
}

TEST_P(Commits, DoNotLengthenTheFileForEver) {
    std::size_t most = 0;
    for (int round = 0; round < 60; ++round) {
        FileRecord next{record_.bytes, {}, -1};
        record_ = next;
        ASSERT_TRUE(change());
        if (round < 5) most = std::max(most, record_.bytes.size());
    }
    EXPECT_LE(record_.bytes.size(), most + most / 4);
    EXPECT_TRUE(contentOf(record_.bytes) == contentAfter_);
}

INSTANTIATE_TEST_SUITE_P(Changes, Commits,
                         testing::Values(Case{"LittleIn512", 512, changeLittle},
                                         Case{"MuchIn512", 512, changeMuch},
                                         Case{"LittleIn4096", 4096, changeLittle},
                                         Case{"MuchIn4096", 4096, changeMuch}),
                         [](auto const& each) { return std::string(each.param.name); });

/// A file that its own writer would need days for: `depth` storages, each but
/// the first in the one before.
FileBytes nestedFile(EntryId depth) {
    constexpr std::size_t sectorSize = 4096, perTable = sectorSize / 4;
    std::size_t const directorySectors = (depth + 1) * entrySize / sectorSize + 1;
    std::size_t const tables = (directorySectors + perTable) / perTable + 1;
    FileBytes bytes((1 + tables + directorySectors) * sectorSize);
    MutableBytes const all(bytes);
    auto const table = all.subspan(sectorSize, tables * sectorSize);
    auto const entries = all.subspan((1 + tables) * sectorSize);
    Header header = Header::ofNewFile(sectorSize);
    header.setFatSectors(static_cast<std::uint32_t>(tables));
    header.setDirectory(static_cast<SectorId>(tables),
                        static_cast<std::uint32_t>(directorySectors));
    for (std::size_t i = 0; i < tables * perTable; ++i) {
        auto const next = static_cast<SectorId>(i + 1);
        std::size_t const last = tables + directorySectors - 1;
        writeNumber(table, 4 * i,
                    i < tables  ? fatSector
                    : i < last  ? next
                    : i == last ? endOfChain
                                : freeSector);
        if (i < tables) header.setDifat(i, static_cast<SectorId>(i));
    }
    std::copy(header.bytes().begin(), header.bytes().end(), bytes.begin());
    for (EntryId i = 0; i <= depth; ++i) {
        Entry entry;
        entry.name = i == 0 ? u"Root Entry" : u"s";
        entry.type = i == 0 ? EntryType::root : EntryType::storage;
        if (i < depth) entry.child = i + 1;
        writeEntry(entry, entries.subspan(i * entrySize, entrySize));
    }
    return bytes;
}

TEST(CompoundFile, StoragesWithoutEndAreDestroyedToo) {
    FileRecord record{nestedFile(200'000), {}, -1};
    {
        CompoundFile file(std::make_unique<RecordedFile>(record), true);
        drop(file, u"s");
        file.commit();
    }
    EXPECT_TRUE(contentOf(record.bytes).empty());
}

/// More sectors than the header has places for their tables.
TEST(CompoundFile, LargeOnesHaveListsOfTables) {
    FileRecord record;
    {
        RecordedFile fresh(record);
        CompoundFile::create(fresh, 512);
    }
    auto const large = pattern(9'000'000, 1);
    {
        CompoundFile file(std::make_unique<RecordedFile>(record), true);
        put(file, u"large", large);
        file.commit();
        put(file, u"small", pattern(100, 2));
        file.commit();
    }
    FileRecord again{record.bytes, {}, -1};
    CompoundFile file(std::make_unique<RecordedFile>(again), true);
    put(file, u"small", pattern(200, 3));
    file.commit();
    EXPECT_LT(again.steps.size(), 60u) << "the cost follows the change";
    auto const content = contentOf(again.bytes);
    EXPECT_TRUE(content.at(u"large") == large);
    EXPECT_TRUE(content.at(u"small") == pattern(200, 3));
}

}  // namespace
