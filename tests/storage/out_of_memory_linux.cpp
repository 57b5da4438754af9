#include <array>
#include <cstdio>
#include <map>

#include <velk_live_counts.h>

#include "conformance/storage/storage_file.h"
#include "storage/failing_memory.h"

// Every single allocation of a change of a compound file fails in turn.

namespace {

using namespace velk::test;
using Content = std::map<Text, std::string>;

HRESULT put(IStorage& storage, OLECHAR const* name, std::size_t size, unsigned seed) {
    Stream stream;
    HRESULT code = storage.OpenStream(name, nullptr, change, 0, stream.put());
    if (code == STG_E_FILENOTFOUND) code = storage.CreateStream(name, change, 0, 0, stream.put());
    if (FAILED(code)) return code;
    ULARGE_INTEGER length;
    length.QuadPart = size;
    code = stream->SetSize(length);
    if (FAILED(code)) return code;
    // Not on the heap, whose blocks are counted.
    static std::array<char, 40000> bytes;
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i / 7 + seed);
    return stream->Write(bytes.data(), static_cast<ULONG>(size), nullptr);
}

/// One change, which counts wholly or not at all.
struct Step {
    char const* name;
    HRESULT (*run)(IStorage& root);
};

HRESULT addStream(IStorage& root) {
    Stream added;
    return root.CreateStream(OLESTR("added stream"), change, 0, 0, added.put());
}

HRESULT addStorage(IStorage& root) {
    Storage added;
    return root.CreateStorage(OLESTR("added"), change, 0, 0, added.put());
}

HRESULT putIntoStorage(IStorage& root) {
    Storage inner;
    HRESULT const code =
        root.OpenStorage(OLESTR("inner"), nullptr, change, nullptr, 0, inner.put());
    return FAILED(code) ? code : put(*inner.get(), OLESTR("deep"), 700, 9);
}

HRESULT listElements(IStorage& root) {
    velk::com::ComPtr<IEnumSTATSTG> elements;
    HRESULT code = root.EnumElements(0, nullptr, 0, elements.put());
    if (FAILED(code)) return code;
    std::array<STATSTG, 20> all{};
    ULONG count = 0;
    code = elements->Next(static_cast<ULONG>(all.size()), all.data(), &count);
    for (ULONG i = 0; i < count; ++i) CoTaskMemFree(all[i].pwcsName);
    return code;
}

constexpr std::array<Step, 14> steps{{
    {"list", listElements},
    {"overwrite small", [](IStorage& root) { return put(root, OLESTR("small"), 100, 1); }},
    {"lengthen small", [](IStorage& root) { return put(root, OLESTR("small"), 900, 2); }},
    {"overwrite big", [](IStorage& root) { return put(root, OLESTR("big"), 6000, 3); }},
    {"lengthen big", [](IStorage& root) { return put(root, OLESTR("big"), 30000, 4); }},
    {"small to big", [](IStorage& root) { return put(root, OLESTR("middle"), 5000, 5); }},
    {"big to small", [](IStorage& root) { return put(root, OLESTR("large"), 50, 6); }},
    {"add stream", addStream},
    {"fill stream", [](IStorage& root) { return put(root, OLESTR("added stream"), 300, 7); }},
    {"add storage", addStorage},
    {"set state bits", [](IStorage& root) { return root.SetStateBits(5, 7); }},
    {"change inside", putIntoStorage},
    {"rename",
     [](IStorage& root) { return root.RenameElement(OLESTR("other"), OLESTR("renamed")); }},
    {"destroy", [](IStorage& root) { return root.DestroyElement(OLESTR("doomed")); }},
}};

void makeFile(FilePlace const& place) {
    auto const root = place.create();
    for (auto const* name : {OLESTR("small"), OLESTR("middle"), OLESTR("other")}) {
        ASSERT_EQ(put(*root.get(), name, 200, 11), S_OK);
    }
    for (auto const* name : {OLESTR("big"), OLESTR("large")}) {
        ASSERT_EQ(put(*root.get(), name, 6000, 12), S_OK);
    }
    for (auto const* name : {OLESTR("inner"), OLESTR("doomed")}) {
        Storage inner;
        ASSERT_EQ(root->CreateStorage(name, change, 0, 0, inner.put()), S_OK);
        ASSERT_EQ(put(*inner.get(), OLESTR("deep"), 4800, 13), S_OK);
    }
}

void collect(IStorage& storage, Text const& path, Content& content) {
    velk::com::ComPtr<IEnumSTATSTG> elements;
    ASSERT_EQ(storage.EnumElements(0, nullptr, 0, elements.put()), S_OK);
    STATSTG status{};
    while (elements->Next(1, &status, nullptr) == S_OK) {
        Text const name = status.pwcsName, inner = path + name;
        CoTaskMemFree(status.pwcsName);
        if (status.type == STGTY_STREAM) {
            content[inner] = velk::test::content(*openStream(storage, name.c_str()).get());
            continue;
        }
        Storage opened;
        ASSERT_EQ(storage.OpenStorage(name.c_str(), nullptr, look, nullptr, 0, opened.put()), S_OK);
        content[inner] = "a storage";
        collect(*opened.get(), inner + OLESTR("/"), content);
    }
}

std::string stateBitsOf(IStorage& storage) {
    STATSTG status{};
    EXPECT_EQ(storage.Stat(&status, STATFLAG_NONAME), S_OK);
    return std::to_string(status.grfStateBits);
}

Content contentOf(FilePlace const& place) {
    Content content;
    auto const root = place.open(look);
    if (!root) return content;
    collect(*root.get(), {}, content);
    content[{}] = stateBitsOf(*root.get());
    return content;
}

bool isOutOfMemory(HRESULT code) {
    return code == STG_E_INSUFFICIENTMEMORY || code == E_OUTOFMEMORY;
}

/// What a client gets that stops at the first failure.
struct Outcome {
    HRESULT code = S_OK;
    std::size_t completed = 0;
};

/// Makes the first `count` steps and commits them.
Outcome make(IStorage& root, std::size_t count = steps.size()) {
    Outcome outcome;
    for (; outcome.completed < count; ++outcome.completed) {
        outcome.code = steps[outcome.completed].run(root);
        if (FAILED(outcome.code)) return outcome;
    }
    outcome.code = root.Commit(STGC_DEFAULT);
    return outcome;
}

class OutOfMemory : public testing::TestWithParam<bool> {
  protected:
    FilePlace const original_;
    FilePlace const place_;
    /// What is in the file after so many steps.
    std::vector<Content> states_;

    void SetUp() override {
        makeFile(original_);
        for (std::size_t count = 0; count <= steps.size(); ++count) {
            restore();
            ASSERT_EQ(make(*place_.open(change).get(), count).code, S_OK);
            states_.push_back(contentOf(place_));
        }
    }

    void restore() const {
        std::filesystem::copy_file(original_.file(), place_.file(),
                                   std::filesystem::copy_options::overwrite_existing);
    }

    /// Opens the file, makes all steps and closes it while allocations fail.
    /// Whether one did.
    bool makeWithout(long allocation, Outcome& outcome) const {
        failAllocations(allocation, GetParam());
        {
            Storage root;
            outcome.code = place_.tryOpen(change, root);
            if (SUCCEEDED(outcome.code)) outcome = make(*root.get());
        }
        return endFailingAllocations();
    }
};

TEST_P(OutOfMemory, LeavesTheStateBeforeOrAfter) {
    long failed = 0, reported = 0;
    for (long allocation = 0;; ++allocation) {
        restore();
        long const blocks = liveBlocks();
        Outcome outcome;
        bool const hasFailed = makeWithout(allocation, outcome);
        EXPECT_EQ(liveBlocks(), blocks) << "leak after " << allocation;
        EXPECT_EQ(VelkLiveCount(VELK_LIVE_COMPOUND_FILE), 0) << allocation;
        if (!hasFailed) break;
        ++failed;
        SCOPED_TRACE(allocation);
        Content const now = contentOf(place_);
        ASSERT_TRUE(now == states_.front() || now == states_[outcome.completed])
            << "after step " << outcome.completed;
        if (SUCCEEDED(outcome.code)) continue;
        ++reported;
        ASSERT_TRUE(isOutOfMemory(outcome.code)) << std::hex << outcome.code;
    }
    EXPECT_GT(failed, 150);
    EXPECT_GT(reported, failed * 9 / 10);
    std::printf("%ld failing allocations, %ld of them reported\n", failed, reported);
    EXPECT_TRUE(contentOf(place_) == states_.back());
}

/// A transacted file goes on after Revert as if nothing had been.
TEST_P(OutOfMemory, IsOverAfterRevert) {
    long repeated = 0;
    for (long allocation = 0;; ++allocation) {
        restore();
        auto root = place_.open(change | STGM_TRANSACTED);
        ASSERT_TRUE(root);
        failAllocations(allocation, GetParam());
        HRESULT code = make(*root.get()).code;
        bool const hasFailed = endFailingAllocations();
        if (!hasFailed) break;
        if (SUCCEEDED(code)) continue;
        SCOPED_TRACE(allocation);
        ASSERT_EQ(root->Revert(), S_OK);
        if (stateBitsOf(*root.get()) != "0") continue;
        code = make(*root.get()).code;
        root = {};
        // What had begun to be written cannot be written again.
        ASSERT_TRUE(code == S_OK || code == STG_E_WRITEFAULT) << std::hex << code;
        ASSERT_TRUE(contentOf(place_) == (code == S_OK ? states_.back() : states_.front()));
        repeated += code == S_OK;
    }
    EXPECT_GT(repeated, 100);
}

INSTANTIATE_TEST_SUITE_P(Allocations, OutOfMemory, testing::Values(false, true),
                         [](auto const& each) {
                             return std::string(each.param ? "AllFromOneOn" : "One");
                         });

}  // namespace
