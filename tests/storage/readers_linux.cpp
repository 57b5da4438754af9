#include <csignal>
#include <cstdlib>

#include <sys/wait.h>
#include <unistd.h>

#include "conformance/storage/storage_file.h"
#include "storage/compound_reader.h"

// What the layer promises beyond the published behaviour: readers keep what
// they opened, and a writer that is killed leaves a whole file.

namespace {

using namespace velk::test;

constexpr DWORD singleWriter = STGM_DIRECT_SWMR | STGM_SHARE_DENY_WRITE | STGM_READWRITE;
constexpr DWORD besideWriter = STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE | STGM_READ;
constexpr std::size_t streamSize = 30000;

/// The one stream holds the pattern of `seed`.
void writeAll(FilePlace const& place, unsigned seed) {
    auto const root = place.open(singleWriter);
    write(*openStream(*root.get(), OLESTR("s"), change).get(), pattern(streamSize, seed));
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
}

void makeFile(FilePlace const& place) {
    auto const root = place.create();
    write(*createStream(*root.get(), OLESTR("s")).get(), pattern(streamSize, 0));
}

TEST(CompoundFileReaders, KeepTheStateThatTheyOpened) {
    FilePlace const place;
    makeFile(place);
    auto const first = place.open(besideWriter);
    for (unsigned seed = 1; seed < 6; ++seed) writeAll(place, seed);
    auto const later = place.open(besideWriter);
    for (unsigned seed = 6; seed < 12; ++seed) writeAll(place, seed);
    EXPECT_TRUE(content(*openStream(*first.get(), OLESTR("s")).get()) == pattern(streamSize, 0));
    EXPECT_TRUE(content(*openStream(*later.get(), OLESTR("s")).get()) == pattern(streamSize, 5));
}

/// How often the writer is killed: VELK_KILLS, or 100 times.
int kills() {
    char const* const wanted = std::getenv("VELK_KILLS");
    return wanted == nullptr ? 100 : std::atoi(wanted);
}

TEST(CompoundFileReaders, FindAWholeFileAfterAWriterWasKilled) {
    FilePlace const place;
    makeFile(place);
    int const rounds = kills();
    ASSERT_GT(rounds, 0);
    for (int round = 0; round < rounds; ++round) {
        pid_t const writer = fork();
        ASSERT_GE(writer, 0);
        if (writer == 0) {
            for (unsigned seed = 1;; ++seed) writeAll(place, seed % 200);
        }
        usleep(static_cast<useconds_t>(200 + 97 * (round % 100)));
        kill(writer, SIGKILL);
        int outcome = 0;
        ASSERT_EQ(waitpid(writer, &outcome, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(outcome)) << "the writer ended by itself";
        auto const root = place.open(look);
        auto const found = content(*openStream(*root.get(), OLESTR("s")).get());
        ASSERT_EQ(found.size(), streamSize);
        ASSERT_TRUE(elementsOf(place.bytes()).find(u"/s")->second.bytes == found) << round;
        bool isWhole = false;
        for (unsigned seed = 0; seed < 200 && !isWhole; ++seed) {
            isWhole = found == pattern(streamSize, seed);
        }
        ASSERT_TRUE(isWhole) << round;
    }
}

}  // namespace
