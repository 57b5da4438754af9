#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

#include <velk_live_counts.h>

#include "storage/compound_reader.h"
#include "storage/crafted_documents.h"
#include "storage/document_steps.h"
#include "storage/failing_disk.h"
#include "storage/harm.h"
#include "support/failing_memory.h"

// Whatever a document is like and whatever fails: a change counts wholly or
// leaves the file byte for byte as it was, and all else in it stays.

namespace {

using namespace velk::test;

struct Fault {
    char const* name;
    DiskCall call;
    int error;
    bool isLasting;
    HRESULT expected;
    /// Of so many places one is tried, except in thorough searches.
    long stride;
};

constexpr Fault faults[] = {
    {"read", DiskCall::read, EIO, false, STG_E_READFAULT, 3},
    {"reads", DiskCall::read, EIO, true, STG_E_READFAULT, 7},
    {"write", DiskCall::write, EIO, false, STG_E_WRITEFAULT, 2},
    {"writes", DiskCall::write, EIO, true, STG_E_WRITEFAULT, 5},
    {"room once", DiskCall::write, ENOSPC, false, STG_E_MEDIUMFULL, 2},
    {"room", DiskCall::write, ENOSPC, true, STG_E_MEDIUMFULL, 2},
    {"sync", DiskCall::sync, EIO, false, STG_E_WRITEFAULT, 1},
    {"allocation", DiskCall::none, 0, false, STG_E_INSUFFICIENTMEMORY, 97},
    {"allocations", DiskCall::none, 0, true, STG_E_INSUFFICIENTMEMORY, 131},
};

bool hadFailed = false;

void arm(Fault const& fault, long place) {
    hadFailed = false;
    bool const isOfMemory = fault.call == DiskCall::none;
    failDisk({fault.call, place, fault.error, fault.isLasting});
    failAllocations(isOfMemory ? place : -1, fault.isLasting);
}
/// `hadFailed` remembers the first time after arm().
void disarm() {
    bool const disk = endFailingDisk(), memory = endFailingAllocations();
    hadFailed = hadFailed || disk || memory;
}

class Documents : public testing::TestWithParam<Document> {
  protected:
    FilePlace const place_;
    Text stream_;
    long failures_ = 0, successes_ = 0;

    void changeAll(Way way);
    void takeStep(Step const& step, Way way, std::string const& original);
    void failEverywhere(Step const& step, Way way, std::string const& before, HRESULT expected,
                        std::string const& after);
    void readAll() const;
};

void Documents::failEverywhere(Step const& step, Way way, std::string const& before,
                               HRESULT expected, std::string const& after) {
    Elements const elementsBefore = elementsOf(before), elementsAfter = elementsOf(after);
    place_.put(before);
    for (Fault const& fault : faults) {
        SCOPED_TRACE(fault.name);
        long const stride = GetParam().isThorough ? 1 : fault.stride;
        for (long place = std::hash<std::string>()(GetParam().name) % stride;; place += stride) {
            long const blocks = liveBlocks();
            arm(fault, place);
            HRESULT const code = runStep(place_, step, stream_, way, disarm);
            disarm();
            EXPECT_EQ(liveBlocks(), blocks) << "leak at " << place;
            EXPECT_EQ(VelkLiveCount(VELK_LIVE_COMPOUND_FILE), 0) << place;
            auto const now = place_.bytes();
            if (now != before) place_.put(before);
            if (!hadFailed) break;
            if (SUCCEEDED(code)) {
                ++successes_;
                ASSERT_TRUE(now == after || elementsOf(now) == elementsAfter) << place;
                continue;
            }
            ++failures_;
            bool const isOne = code == fault.expected || code == expected ||
                               (fault.call == DiskCall::none && code == E_OUTOFMEMORY);
            ASSERT_TRUE(isOne) << std::hex << code << std::dec << " at " << place;
            bool const mayDiffer = fault.isLasting && fault.error == EIO;
            ASSERT_TRUE(now == before || (mayDiffer && elementsOf(now) == elementsBefore)) << place;
        }
    }
}

void Documents::takeStep(Step const& step, Way way, std::string const& original) {
    auto const before = place_.bytes();
    auto const known = GetParam().refused.find(step.name);
    HRESULT const code = runStep(place_, step, stream_, way, [] {});
    auto const after = place_.bytes();
    if (!GetParam().isSample) {
        EXPECT_EQ(codeName(code), known == GetParam().refused.end() ? "ok" : known->second);
    }
    if (FAILED(code)) {
        ASSERT_TRUE(after == before) << "refused and changed";
    } else {
        EXPECT_EQ(harmBy(step, stream_, before, after), "");
        EXPECT_EQ(lostProperties(step, original, after), "");
        if (step.set != nullptr) {
            auto const root = place_.open();
            ASSERT_TRUE(root);
            EXPECT_EQ(step.measure(*root.get()), step.expected);
            EXPECT_TRUE(place_.bytes() == after);
        }
    }
    if (SUCCEEDED(code)) {
        place_.put(before);
        shortenTransfers(true);
        EXPECT_EQ(runStep(place_, step, stream_, way, [] {}), S_OK);
        EXPECT_GT(shortTransfers(), 3);
        shortenTransfers(false);
        EXPECT_TRUE(place_.bytes() == after) << "short transfers";
    }
    failEverywhere(step, way, before, code, after);
    place_.put(after);
}

/// What the layer reads is what others read.
void Documents::readAll() const {
    auto const elements = elementsOf(GetParam().bytes);
    auto const root = place_.open(look);
    for (auto const& [path, element] : elements) {
        bool const isWhole = element.bytes.size() == (numberIn(element.entry, 120) & 0xFFFFFFFF);
        if (path.rfind(u'/') != 0 || !element.isStream() || !isWhole || path.size() == 1) continue;
        if (isSharedName(elements, path) || path.find(u'\0') != path.npos) continue;
        auto const stream = openStream(*root.get(), path.c_str() + 1);
        EXPECT_TRUE(stream && content(*stream.get()) == element.bytes);
    }
}

void Documents::changeAll(Way way) {
    auto const& original = GetParam().bytes;
    place_.put(original);
    Storage root;
    bool const isOpen = SUCCEEDED(place_.tryOpen(look, root));
    ASSERT_TRUE(isOpen || GetParam().isSample);
    if (!isOpen) return;
    root = {};
    readAll();
    stream_ = biggestStream(elementsOf(original));
    auto const others = way == Way::direct ? Step::Clients::transacted : Step::Clients::direct;
    for (Step const& step : steps) {
        if (step.clients == others) continue;
        if (step.changes == nullptr && stream_.empty()) continue;
        SCOPED_TRACE(step.name);
        takeStep(step, way, original);
        if (HasFatalFailure()) return;
    }
}

TEST_P(Documents, AreNeverHarmed) {
    for (Way const way : {Way::transacted, Way::direct, Way::again}) {
        if (way == Way::again && !GetParam().isThorough) continue;
        SCOPED_TRACE(static_cast<int>(way));
        changeAll(way);
    }
    std::printf("%ld failures, %ld in spite of which the change counts\n", failures_, successes_);
    RecordProperty("failures", static_cast<int>(failures_));
}

/// Damage anywhere: steps are refused or harm nothing.
TEST(DamagedDocuments, AreNotHarmedFurther) {
    std::mt19937 random(42);
    auto const documents = craftedDocuments();
    FilePlace const place;
    long changed = 0, refused = 0;
    for (int round = 0; round < 3000; ++round) {
        auto const& document = documents[random() % documents.size()];
        auto damaged = document.bytes;
        std::string what = document.name;
        for (auto damages = 1 + random() % 4; damages > 0; --damages) {
            // Many in what leads to others, which stands at the ends.
            std::size_t const part = random() % 3 == 0 ? 512 : damaged.size();
            std::size_t const at = random() % part, from = damaged.size() - part;
            bool const isBehind = random() % 2 == 0;
            char const byte = static_cast<char>(random() % 2 == 0 ? random() : random() % 8);
            damaged[isBehind ? from + at : at] = byte;
            what += " " + std::to_string(isBehind ? from + at : at) + ":" +
                    std::to_string(static_cast<unsigned char>(byte));
        }
        auto const stream = biggestStream(elementsOf(damaged));
        Step const& step = steps[random() % steps.size()];
        SCOPED_TRACE(what + " " + step.name);
        place.put(damaged);
        bool const isDirect = step.clients != Step::Clients::transacted && random() % 2 == 0;
        Way const way = isDirect ? Way::direct : Way::transacted;
        bool const isMade = SUCCEEDED(runStep(place, step, stream, way, [] {}));
        ++(isMade ? changed : refused);
        auto const now = place.bytes();
        if (isMade) {
            EXPECT_EQ(harmBy(step, stream, damaged, now), "");
        } else {
            EXPECT_TRUE(now == damaged) << "refused and changed";
        }
    }
    EXPECT_GT(changed, 500);
    EXPECT_GT(refused, 500);
}

/// Those in the folder that VELK_DOCUMENTS names; none when it names none.
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

std::string nameOf(testing::TestParamInfo<Document> const& each) {
    std::string name = each.param.name;
    std::ranges::replace_if(
        name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Crafted, Documents, testing::ValuesIn(craftedDocuments()), nameOf);
INSTANTIATE_TEST_SUITE_P(Samples, Documents, testing::ValuesIn(sampleDocuments()), nameOf);
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Documents);

}  // namespace
