#include <algorithm>

#include "conformance/storage_properties/property_set_file.h"
#include "support/expected_difference.h"

// Making, opening, changing and removing sets.

namespace {

using namespace velk::test;

TEST(PropertySets, AreThereOnlyOnceTheyAreMade) {
    FilePlace const place;
    auto const root = place.create();
    PropertySet set;
    EXPECT_EQ(setsOf(root)->Open(summarySet, look, set.put()), STG_E_FILENOTFOUND);
    EXPECT_FALSE(set);
    set = createSet(root, summarySet);
    EXPECT_TRUE(listing(set).empty());
    PropertySet second;
    EXPECT_EQ(setsOf(root)->Open(summarySet, look, second.put()), STG_E_ACCESSDENIED);
    set.reset();
    EXPECT_EQ(setsOf(root)->Open(summarySet, look, second.put()), S_OK);
    second.reset();
    EXPECT_EQ(setsOf(root)->Delete(summarySet), S_OK);
    EXPECT_EQ(setsOf(root)->Delete(summarySet), STG_E_FILENOTFOUND);
}

TEST(PropertySets, AreOpenedAloneOnly) {
    FilePlace const place;
    auto const root = place.create();
    createSet(root, summarySet);
    PropertySet set;
    EXPECT_EQ(setsOf(root)->Create(ownSet, nullptr, 0, STGM_READWRITE, set.put()),
              STG_E_INVALIDFLAG);
    EXPECT_EQ(setsOf(root)->Create(ownSet, nullptr, 0, look, set.put()), STG_E_INVALIDFLAG);
    EXPECT_EQ(setsOf(root)->Open(summarySet, STGM_READ | STGM_SHARE_DENY_NONE, set.put()),
              STG_E_INVALIDFLAG);
}

TEST(PropertySets, OpenedForReadingAreNotChanged) {
    FilePlace const place;
    auto const root = place.create();
    EXPECT_EQ(put(createSet(root, ownSet), byId(7), number(1)), S_OK);
    auto const set = openSet(root, ownSet);
    auto const seven = byId(7);
    EXPECT_EQ(put(set, seven, number(2)), STG_E_ACCESSDENIED);
    EXPECT_EQ(set->DeleteMultiple(1, &seven), STG_E_ACCESSDENIED);
    EXPECT_EQ(set->SetClass(ownSet), STG_E_ACCESSDENIED);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), STG_E_ACCESSDENIED);
}

TEST(PropertySets, KeepTheirOwnIdsToThemselves) {
    FilePlace const place;
    auto const root = place.create();
    auto const set = createSet(root, ownSet);
    EXPECT_EQ(put(set, byId(2), number(1)), S_OK);
    for (PROPID const id : {PROPID{0}, PROPID{1}, PROPID{0x80000000}, PROPID{0x80000003}}) {
        EXPECT_EQ(put(set, byId(id), number(1)), STG_E_INVALIDPARAMETER) << id;
    }
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(listing(set).size(), 1u);
}

TEST(PropertySets, TellTheirCodePage) {
    FilePlace const place;
    {
        auto const root = place.create();
        EXPECT_EQ(put(createSet(root, ownSet), byId(2), number(1)), S_OK);
    }
    auto const root = place.open(look);
    auto const set = openSet(root, ownSet);
    PropVariant page;
    EXPECT_EQ(get(set, byId(PID_CODEPAGE), page), S_OK);
    EXPECT_EQ(page.get().vt, VT_I2);
    EXPECT_EQ(page.get().uiVal, 1200);
    EXPECT_FALSE(listing(set).contains(PID_CODEPAGE));
    STATPROPSETSTG status{};
    EXPECT_EQ(set->Stat(&status), S_OK);
    EXPECT_TRUE(status.fmtid == ownSet);
    EXPECT_EQ(status.grfFlags, PROPSETFLAG_DEFAULT);
}

TEST(PropertySets, LosePropertiesThatAreDeleted) {
    FilePlace const place;
    auto const one = byName(OLESTR("one")), two = byId(3), missing = byName(OLESTR("missing"));
    {
        auto const root = place.create();
        auto const set = createSet(root, ownSet);
        EXPECT_EQ(put(set, one, number(1)), S_OK);
        EXPECT_EQ(put(set, two, number(2)), S_OK);
        EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    }
    {
        auto const root = place.open();
        auto const set = openSet(root, ownSet, change);
        EXPECT_EQ(set->DeleteMultiple(1, &missing), S_OK);
        EXPECT_EQ(set->DeleteMultiple(1, &one), S_OK);
        EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    }
    auto const root = place.open(look);
    auto const found = listing(openSet(root, ownSet));
    EXPECT_EQ(found.size(), 1u);
    EXPECT_TRUE(found.contains(3));
}

TEST(PropertySets, GiveBackWhatWasNotCommitted) {
    FilePlace const place;
    auto const root = place.create();
    auto const set = createSet(root, ownSet);
    EXPECT_EQ(put(set, byId(2), number(1)), S_OK);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(put(set, byId(2), number(2)), S_OK);
    EXPECT_EQ(put(set, byName(OLESTR("new")), number(3)), S_OK);
    EXPECT_EQ(set->Revert(), S_OK);
    PropVariant read;
    EXPECT_EQ(get(set, byId(2), read), S_OK);
    EXPECT_EQ(read.get().lVal, 1);
    EXPECT_EQ(listing(set).size(), 1u);
}

// A client that changes a document commits the set and nothing else.
TEST(PropertySets, CommitIsSeenByOthersAtOnce) {
    constexpr DWORD writing = STGM_DIRECT_SWMR | STGM_SHARE_DENY_WRITE | STGM_READWRITE;
    constexpr DWORD reading = STGM_DIRECT_SWMR | STGM_SHARE_DENY_NONE | STGM_READ;
    FilePlace const place;
    {
        auto const root = place.create();
        EXPECT_EQ(put(createSet(root, ownSet), byId(2), number(1)), S_OK);
    }
    auto const root = place.open(writing);
    auto const set = openSet(root, ownSet, change);
    EXPECT_EQ(put(set, byId(2), number(2)), S_OK);
    auto const seen = [&] {
        PropVariant read;
        EXPECT_EQ(get(openSet(place.open(reading), ownSet), byId(2), read), S_OK);
        return read.get().lVal;
    };
    EXPECT_EQ(seen(), 1);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(seen(), 2);
}

TEST(PropertySets, OfUsersStandBehindTheDocuments) {
    FilePlace const place;
    {
        auto const root = place.create();
        {
            auto const custom = createSet(root, customSet);
            EXPECT_EQ(put(custom, byName(OLESTR("Client")), number(1)), S_OK);
            EXPECT_EQ(custom->Commit(STGC_DEFAULT), S_OK);
        }
        PropertySet document;
        ASSERT_EQ(setsOf(root)->Open(documentSet, change, document.put()), S_OK);
        PropertySet both;
        EXPECT_EQ(setsOf(root)->Open(customSet, look, both.put()), STG_E_ACCESSDENIED);
        EXPECT_EQ(put(document, byId(15), number(2)), S_OK);
        EXPECT_EQ(document->Commit(STGC_DEFAULT), S_OK);
    }
    expectDifference(System::wine, "it keeps one set in a stream", [&] {
        auto const root = place.open();
        PropVariant read;
        EXPECT_EQ(get(openSet(root, documentSet), byId(15), read), S_OK);
        EXPECT_EQ(read.get().lVal, 2);
        EXPECT_EQ(get(openSet(root, customSet), byName(OLESTR("client")), read), S_OK);
        EXPECT_EQ(read.get().lVal, 1);
        EXPECT_EQ(setsOf(root)->Delete(customSet), S_OK);
        PropertySet gone;
        EXPECT_EQ(setsOf(root)->Open(customSet, look, gone.put()), STG_E_FILENOTFOUND);
        EXPECT_EQ(get(openSet(root, documentSet), byId(15), read), S_OK);
    });
}

TEST(PropertySets, AreEnumerated) {
    FilePlace const place;
    auto const root = place.create();
    createSet(root, summarySet);
    createSet(root, ownSet);
    createStream(*root.get(), OLESTR("no set"));
    velk::com::ComPtr<IEnumSTATPROPSETSTG> sets;
    ASSERT_EQ(setsOf(root)->Enum(sets.put()), S_OK);
    std::vector<FMTID> found;
    STATPROPSETSTG status{};
    ULONG done = 0;
    while (sets->Next(1, &status, &done) == S_OK) found.push_back(status.fmtid);
    EXPECT_EQ(found.size(), 2u);
    for (FMTID const& id : {summarySet, ownSet}) {
        EXPECT_EQ(std::count(found.begin(), found.end(), id), 1);
    }
}

TEST(PropertySets, RefuseNullPointers) {
    if (runsOn(System::wine)) GTEST_SKIP() << "it ends the process at some of them";
    FilePlace const place;
    auto const root = place.create();
    auto const sets = setsOf(root);
    EXPECT_TRUE(FAILED(sets->Create(ownSet, nullptr, 0, change, nullptr)));
    EXPECT_TRUE(FAILED(sets->Open(ownSet, look, nullptr)));
    EXPECT_TRUE(FAILED(sets->Enum(nullptr)));
    auto const set = createSet(root, ownSet);
    EXPECT_TRUE(FAILED(set->ReadMultiple(1, nullptr, nullptr)));
    EXPECT_TRUE(FAILED(set->WriteMultiple(1, nullptr, nullptr, 2)));
    EXPECT_TRUE(FAILED(set->DeleteMultiple(1, nullptr)));
    EXPECT_TRUE(FAILED(set->ReadPropertyNames(1, nullptr, nullptr)));
    EXPECT_TRUE(FAILED(set->Enum(nullptr)));
    EXPECT_TRUE(FAILED(set->Stat(nullptr)));
    PROPSPEC odd{};
    odd.ulKind = 5;
    EXPECT_EQ(put(set, odd, number(1)), STG_E_INVALIDPARAMETER);
}

}  // namespace
