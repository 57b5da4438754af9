#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

#include "storage/compound_reader.h"
#include "storage/crafted_documents.h"
#include "storage/document_steps.h"
#include "storage/failing_disk.h"
#include "storage/harm.h"

// A commit counts wholly or not at all, whenever the machine stops, and costs
// what its change costs.

namespace {

using namespace velk::test;

constexpr DWORD transacted = change | STGM_TRANSACTED;

/// All that clients do, in one commit.
HRESULT changeMuch(FilePlace const& place, Text const& stream) {
    Storage root;
    HRESULT code = place.tryOpen(transacted, root);
    for (Step const& step : steps) {
        if (SUCCEEDED(code)) code = step.run(*root.get(), stream);
    }
    return SUCCEEDED(code) ? root->Commit(STGC_DEFAULT) : code;
}

/// The file at moments at which the machine may stop: what was synchronised is
/// there, and of the writes behind it any, in any order.
class Stops {
  public:
    Stops(std::string before, std::vector<DiskStep> steps)
        : before_(std::move(before)), steps_(std::move(steps)) {}

    std::size_t steps() const { return steps_.size(); }

    std::string behind(std::size_t step, std::mt19937* anyOrder) const {
        std::string file = before_;
        std::vector<DiskStep const*> onTheirWay;
        for (std::size_t i = 0; i < step; ++i) {
            onTheirWay.push_back(&steps_[i]);
            if (steps_[i].isSync()) arrive(onTheirWay, file);
        }
        if (anyOrder != nullptr) {
            std::shuffle(onTheirWay.begin(), onTheirWay.end(), *anyOrder);
            onTheirWay.resize((*anyOrder)() % (onTheirWay.size() + 1));
        }
        arrive(onTheirWay, file);
        return file;
    }

  private:
    static void arrive(std::vector<DiskStep const*>& onTheirWay, std::string& file) {
        for (auto const* step : onTheirWay) step->apply(file);
        onTheirWay.clear();
    }

    std::string before_;
    std::vector<DiskStep> steps_;
};

TEST(Commits, CountWhollyOrNotAtAllWhenTheMachineStops) {
    std::mt19937 random(4711);
    FilePlace const place;
    long stops = 0;
    for (auto const& document : craftedDocuments()) {
        constexpr std::size_t mostBytes = 200'000;
        if (!document.refused.empty() || document.bytes.size() > mostBytes) continue;
        SCOPED_TRACE(document.name);
        auto const before = elementsOf(document.bytes);
        place.put(document.bytes);
        recordDisk();
        HRESULT const code = changeMuch(place, biggestStream(before));
        Stops const all(document.bytes, recordedSteps());
        ASSERT_EQ(code, S_OK);
        auto const changed = place.bytes();
        auto const after = elementsOf(changed);
        ASSERT_TRUE(before != after);
        ASSERT_TRUE(all.behind(all.steps(), nullptr) == changed) << "not all is written down";
        auto const isOneOfBoth = [&](std::string const& file) {
            ++stops;
            auto const now = elementsOf(file);
            return now == before || now == after;
        };
        for (std::size_t step = 0; step <= all.steps(); ++step) {
            ASSERT_TRUE(isOneOfBoth(all.behind(step, nullptr))) << step;
        }
        for (int round = document.isThorough ? 1000 : 40; round > 0; --round) {
            std::size_t const step = random() % (all.steps() + 1);
            ASSERT_TRUE(isOneOfBoth(all.behind(step, &random))) << round;
        }
    }
    EXPECT_GT(stops, 3000);
}

void writeStream(FilePlace const& place, OLECHAR const* name, std::string const& bytes) {
    auto const root = place.open(transacted);
    auto const stream = createStream(*root.get(), name);
    write(*stream.get(), bytes);
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
}

TEST(Commits, DoNotLengthenTheFileForEver) {
    FilePlace const place;
    place.put(craftedDocuments().front().bytes);
    std::size_t most = 0;
    for (unsigned round = 0; round < 60; ++round) {
        writeStream(place, OLESTR("other"), pattern(3000 + 5000 * (round % 2), round));
        if (round < 5) most = std::max(most, place.bytes().size());
    }
    EXPECT_LE(place.bytes().size(), most + most / 4);
}

/// More sectors than the header has places for their tables.
TEST(Commits, OfLargeFilesCostWhatTheChangeCosts) {
    FilePlace const place;
    auto const large = pattern(9'000'000);
    place.create();
    writeStream(place, OLESTR("large"), large);
    writeStream(place, OLESTR("small"), pattern(100, 2));
    recordDisk();
    writeStream(place, OLESTR("small"), pattern(200, 3));
    EXPECT_LT(recordedSteps().size(), 60U);
    auto const found = elementsOf(place.bytes());
    EXPECT_TRUE(found.find(u"/large")->second.bytes == large);
    EXPECT_TRUE(found.find(u"/small")->second.bytes == pattern(200, 3));
}

/// A file that no client would make: each storage in the one before.
TEST(Commits, StoragesWithoutEndAreDestroyedToo) {
    FilePlace const place;
    place.put(craftedFile("nested"));
    {
        auto const root = place.open();
        EXPECT_EQ(root->DestroyElement(OLESTR("s")), S_OK);
    }
    EXPECT_EQ(elementsOf(place.bytes()).size(), 1U) << "more than the root is left";
}

/// How often the writer is killed: VELK_KILLS, or 100 times.
int kills() {
    char const* const wanted = std::getenv("VELK_KILLS");
    return wanted == nullptr ? 100 : std::atoi(wanted);
}

TEST(Commits, CountWhollyOrNotAtAllWhenTheWriterIsKilled) {
    constexpr unsigned states = 200;
    FilePlace const place;
    place.create();
    writeStream(place, OLESTR("s"), pattern(30000, 0));
    int const rounds = kills();
    ASSERT_GT(rounds, 0);
    for (int round = 0; round < rounds; ++round) {
        pid_t const writer = fork();
        ASSERT_GE(writer, 0);
        for (unsigned seed = 1; writer == 0; ++seed) {
            auto const root = place.open(modeOf("change deny-write swmr"));
            write(*openStream(*root.get(), OLESTR("s"), change).get(),
                  pattern(30000, seed % states));
            EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
        }
        usleep(static_cast<useconds_t>(200 + 97 * (round % 100)));
        kill(writer, SIGKILL);
        int outcome = 0;
        ASSERT_EQ(waitpid(writer, &outcome, 0), writer);
        ASSERT_TRUE(WIFSIGNALED(outcome)) << "the writer ended by itself";
        auto const root = place.open(look);
        auto const found = content(*openStream(*root.get(), OLESTR("s")).get());
        ASSERT_TRUE(elementsOf(place.bytes()).find(u"/s")->second.bytes == found) << round;
        unsigned seed = 0;
        while (seed < states && found != pattern(30000, seed)) ++seed;
        ASSERT_LT(seed, states) << "half a change, round " << round;
    }
}

}  // namespace
