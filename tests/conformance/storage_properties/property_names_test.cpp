#include "conformance/storage_properties/property_set_file.h"
#include "support/expected_difference.h"

// Names of properties.

namespace {

using namespace velk::test;

void putNames(FilePlace const& place, DWORD flags) {
    auto const root = place.create();
    auto const set = createSet(root, ownSet, flags);
    EXPECT_EQ(put(set, byName(OLESTR("Client")), number(1)), S_OK);
    EXPECT_EQ(put(set, byName(OLESTR("Department")), number(2)), S_OK);
    EXPECT_EQ(put(set, byName(OLESTR("cLIENT")), number(3)), S_OK);
    EXPECT_EQ(put(set, byId(100), number(4)), S_OK);
    EXPECT_EQ(put(set, byName(OLESTR("later")), number(5)), S_OK);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
}

void expectNames(FilePlace const& place) {
    auto const root = place.open(look);
    auto const set = openSet(root, ownSet);
    ASSERT_TRUE(set);
    PropVariant read;
    EXPECT_EQ(get(set, byName(OLESTR("later")), read), S_OK);
    EXPECT_EQ(read.get().lVal, 5);
    EXPECT_EQ(get(set, byName(OLESTR("CLIENT")), read), S_OK);
    EXPECT_EQ(read.get().lVal, 3);
    EXPECT_EQ(get(set, byName(OLESTR("nobody")), read), S_FALSE);
    EXPECT_EQ(read.get().vt, VT_EMPTY);
    auto const found = listing(set);
    EXPECT_EQ(found.size(), 4u);
    for (PROPID const id : {2, 3, 100, 101}) {
        ASSERT_TRUE(found.contains(id)) << id;
        EXPECT_EQ(found.at(id).name.has_value(), id != 100) << id;
    }
    EXPECT_EQ(found.at(3).name, OLESTR("Department"));
    PROPID const ids[] = {3, 2};
    LPOLESTR names[2] = {};
    ASSERT_EQ(set->ReadPropertyNames(2, ids, names), S_OK);
    EXPECT_EQ(Text(names[0]), OLESTR("Department"));
    EXPECT_EQ(Text(names[1]), OLESTR("Client"));
    for (LPOLESTR const name : names) CoTaskMemFree(name);
}

TEST(PropertyNames, AreKeptAndFoundWithoutRegardToCase) {
    for (DWORD const flags : {PROPSETFLAG_DEFAULT, PROPSETFLAG_ANSI}) {
        SCOPED_TRACE(flags);
        FilePlace const place;
        putNames(place, flags);
        expectDifference(System::wine, "it does not read every dictionary, and lists no names",
                         [&] { expectNames(place); });
    }
}

TEST(PropertyNames, MayDifferByCase) {
    FilePlace const place;
    {
        auto const root = place.create();
        auto const set = createSet(root, ownSet, PROPSETFLAG_CASE_SENSITIVE);
        EXPECT_EQ(put(set, byName(OLESTR("name")), number(1)), S_OK);
        EXPECT_EQ(put(set, byName(OLESTR("NAME")), number(2)), S_OK);
        EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    }
    auto const root = place.open(look);
    auto const set = openSet(root, ownSet);
    PropVariant read;
    EXPECT_EQ(get(set, byName(OLESTR("name")), read), S_OK);
    EXPECT_EQ(read.get().lVal, 1);
    EXPECT_EQ(get(set, byName(OLESTR("NAME")), read), S_OK);
    EXPECT_EQ(read.get().lVal, 2);
    expectDifference(System::wine, "it forgets that a set counts case",
                     [&] { EXPECT_EQ(get(set, byName(OLESTR("Name")), read), S_FALSE); });
}

TEST(PropertyNames, AreGivenAndTakenAway) {
    FilePlace const place;
    auto const root = place.create();
    auto const set = createSet(root, ownSet);
    EXPECT_EQ(put(set, byName(OLESTR("before")), number(1)), S_OK);
    PROPID const id = 2;
    auto* name = const_cast<OLECHAR*>(OLESTR("after"));
    EXPECT_EQ(set->WritePropertyNames(1, &id, &name), S_OK);
    PropVariant read;
    EXPECT_EQ(get(set, byName(OLESTR("after")), read), S_OK);
    EXPECT_EQ(read.get().lVal, 1);
    expectDifference(System::wine, "a renamed property is found under its old name too",
                     [&] { EXPECT_EQ(get(set, byName(OLESTR("before")), read), S_FALSE); });
    expectDifference(System::wine, "DeletePropertyNames looks for names among the values", [&] {
        EXPECT_EQ(set->DeletePropertyNames(1, &id), S_OK);
        EXPECT_EQ(get(set, byName(OLESTR("after")), read), S_FALSE);
    });
    EXPECT_EQ(get(set, byId(2), read), S_OK);
}

TEST(PropertyNames, ThatMakeNoSenseAreRefused) {
    if (runsOn(System::wine)) GTEST_SKIP() << "it ends the process at some";
    FilePlace const place;
    auto const root = place.create();
    auto const set = createSet(root, ownSet);
    EXPECT_EQ(put(set, byName(OLESTR("")), number(1)), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(put(set, byName(Text(300, 'x').c_str()), number(1)), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(put(set, byName(nullptr), number(1)), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(put(set, byName(OLESTR("taken")), number(1)), S_OK);
    PROPID const other = 9;
    auto* name = const_cast<OLECHAR*>(OLESTR("TAKEN"));
    EXPECT_EQ(set->WritePropertyNames(1, &other, &name), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(listing(set).size(), 1u);
}

}  // namespace
