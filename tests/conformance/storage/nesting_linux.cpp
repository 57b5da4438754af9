#include "conformance/storage/storage_file.h"

// Storages that lie in one another deeper than a copy can follow, which damaged
// files can have.

namespace {

using namespace velk::test;

/// A file whose storages lie in one another.
void makeNested(FilePlace const& place, int depth) {
    std::vector<Storage> open;
    open.push_back(place.create());
    for (int i = 0; i < depth; ++i) {
        Storage inner;
        ASSERT_EQ(open.back()->CreateStorage(OLESTR("s"), change, 0, 0, inner.put()), S_OK);
        open.push_back(std::move(inner));
    }
    // A storage is not released before what is in it.
    while (!open.empty()) open.pop_back();
}

HRESULT copied(int depth) {
    FilePlace const from, to;
    makeNested(from, depth);
    auto const source = from.open(look);
    auto const target = to.create();
    return source->CopyTo(0, nullptr, nullptr, target.get());
}

TEST(CompoundFile, CopiesOfDeeplyNestedStoragesEndCleanly) {
    EXPECT_EQ(copied(200), S_OK);
    EXPECT_EQ(copied(300), STG_E_INSUFFICIENTMEMORY);
}

}  // namespace
