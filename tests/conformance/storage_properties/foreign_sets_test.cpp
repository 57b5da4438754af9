#include "conformance/storage_properties/property_set_file.h"
#include "conformance/storage_properties/set_bytes.h"
#include "support/expected_difference.h"

// Streams that others have written, and damaged ones.

namespace {

using namespace velk::test;

/// A file whose summary information is these bytes.
void makeFile(FilePlace const& place, std::string const& bytes,
              OLECHAR const* name = OLESTR("\5SummaryInformation")) {
    auto const root = place.create();
    auto const stream = createStream(*root.get(), name);
    if (!bytes.empty()) write(*stream.get(), bytes);
}

struct Paged {
    std::uint16_t page;
    std::string bytes;
    std::string utf8;
};

TEST(ForeignSets, TextsComeInTheSystemsOwnEncoding) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "its own encoding is another one";
    for (Paged const& paged :
         {Paged{1252, "caf\xe9", "caf\xc3\xa9"}, Paged{1251, "\xc4\xe0", "\xd0\x94\xd0\xb0"},
          Paged{1256, "\xe3", "\xd9\x85"},
          // A mark may follow the last letter, so that converters hold it back.
          Paged{1255, "\xe9\xe5", "\xd7\x99\xd7\x95"}, Paged{1258, "T\xe2", "T\xc3\xa2"},
          Paged{1258, "a\xe2", "a\xc3\xa2"}, Paged{1255, "\xe5\xff", "\xd7\x95\xef\xbf\xbd"},
          Paged{932, "\x93\xfa\x96\x7b", "\xe6\x97\xa5\xe6\x9c\xac"},
          Paged{936, "\xd6\xd0", "\xe4\xb8\xad"}, Paged{10000, "\x8e", "\xc3\xa9"},
          Paged{65001, "\xe4\xb8\xad", "\xe4\xb8\xad"},
          Paged{1200, std::string("A\0\xe9\0\0", 5), "A\xc3\xa9"},
          Paged{0, "caf\xe9", "caf\xc3\xa9"}}) {
        FilePlace const place;
        makeFile(place, header({summarySet},
                               {section({{1, codePage(paged.page)}, {2, text(paged.bytes)}})}));
        auto const root = place.open(look);
        auto const set = openSet(root, summarySet);
        PropVariant read;
        ASSERT_EQ(get(set, byId(2), read), S_OK) << paged.page;
        ASSERT_EQ(read.get().vt, VT_LPSTR) << paged.page;
        EXPECT_EQ(read.get().pszVal, paged.utf8) << paged.page;
    }
}

TEST(ForeignSets, WithoutACodePageAreWestern) {
    FilePlace const place;
    makeFile(place, header({summarySet}, {section({{2, text("caf\xe9")}})}));
    auto const set = openSet(place.open(look), summarySet);
    PropVariant read;
    ASSERT_EQ(get(set, byId(2), read), S_OK);
    if (runsOn(System::ownLayer)) {
        EXPECT_STREQ(read.get().pszVal, "caf\xc3\xa9");
    }
    EXPECT_EQ(get(set, byId(3), read), S_FALSE);
}

// What is changed back is as it was, and all else never changed: also what is
// unaligned, unpadded, unknown or cannot be read.
TEST(ForeignSets, KeepWhatIsNotChanged) {
    expectDifference(System::wine, "it writes known types only", [&] {
        std::string const unpadded = number32(VT_VECTOR | VT_LPSTR) + number32(2) + number32(3) +
                                     std::string("ab\0", 3) + number32(2) + std::string("c\0", 2);
        std::string const odd = number32(0x777) + "what is this";
        std::string const broken = number32(VT_BLOB) + number32(0xfffffff0) + "x..";
        std::string const names =
            number32(1) + number32(5) + number32(3) + std::string("n\xe9\0", 3);
        std::string const cut = number32(VT_I2) + number16(7);
        FilePlace const place;
        makeFile(place, header({summarySet}, {section({{0, names},
                                                       {1, codePage(1252)},
                                                       {4, cut},
                                                       {5, number32(VT_I4) + number32(1)},
                                                       {6, unpadded},
                                                       {7, odd},
                                                       {8, broken}})}));
        auto const stored = [&] {
            return content(
                *openStream(*place.open(look).get(), OLESTR("\5SummaryInformation")).get());
        };
        auto const put5 = [&](LONG value) {
            auto const root = place.open();
            auto const set = openSet(root, summarySet, change);
            ASSERT_TRUE(set);
            EXPECT_EQ(put(set, byId(5), number(value)), S_OK);
            EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
        };
        put5(1);
        auto const first = stored();
        // What followed a value without padding does not become its padding.
        EXPECT_NE(first.find(cut + number16(0) + number32(VT_I4) + number32(1)), std::string::npos);
        put5(2);
        auto const second = stored();
        put5(1);
        EXPECT_NE(first, second);
        EXPECT_EQ(first, stored());
        for (auto const& kept : {names, unpadded, odd, broken}) {
            EXPECT_NE(first.find(kept), std::string::npos);
        }
        auto const set = openSet(place.open(look), summarySet);
        PropVariant read;
        ASSERT_EQ(get(set, byId(6), read), S_OK);
        ASSERT_EQ(read.get().calpstr.cElems, 2u);
        EXPECT_STREQ(read.get().calpstr.pElems[0], "ab");
        EXPECT_STREQ(read.get().calpstr.pElems[1], "c");
        EXPECT_TRUE(FAILED(get(set, byId(7), read)));
        EXPECT_TRUE(FAILED(get(set, byId(8), read)));
        EXPECT_EQ(get(set, byName(OLESTR("N\xc9")), read), S_OK);
    });
}

// Neither replaced nor destroyed, asked to or not.
TEST(ForeignSets, StoragesWithASetsNameAreRefused) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "others replace them";
    FilePlace const place;
    auto const root = place.create();
    Storage inner;
    OLECHAR const* const name = OLESTR("\5SummaryInformation");
    ASSERT_EQ(root->CreateStorage(name, change, 0, 0, inner.put()), S_OK);
    inner = {};
    for (DWORD const mode : {change, change | STGM_CREATE}) {
        PropertySet set;
        EXPECT_EQ(setsOf(root)->Create(summarySet, nullptr, 0, mode, set.put()),
                  STG_E_FILEALREADYEXISTS);
    }
    EXPECT_EQ(setsOf(root)->Delete(summarySet), STG_E_FILENOTFOUND);
    EXPECT_EQ(root->OpenStorage(name, nullptr, look, nullptr, 0, inner.put()), S_OK);
}

// The text ends at its first zero, and the texts behind it are where its size says.
TEST(ForeignSets, TextsInVectorsMayHaveRubbishBehindTheirZero) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "others end them elsewhere";
    std::string const rubbish = number32(VT_VECTOR | VT_LPSTR) + number32(2) + number32(8) +
                                std::string("ab\0xyz12", 8) + number32(4) + std::string("cde\0", 4);
    std::string const wide = number32(VT_VECTOR | VT_LPWSTR) + number32(1) + number32(4) +
                             std::string("w\0\0\0x\0y\0", 8);
    FilePlace const place;
    makeFile(place,
             header({summarySet}, {section({{1, codePage(1252)}, {6, rubbish}, {7, wide}})}));
    auto const set = openSet(place.open(look), summarySet);
    PropVariant read;
    ASSERT_EQ(get(set, byId(6), read), S_OK);
    ASSERT_EQ(read.get().calpstr.cElems, 2U);
    EXPECT_STREQ(read.get().calpstr.pElems[0], "ab");
    EXPECT_STREQ(read.get().calpstr.pElems[1], "cde");
    ASSERT_EQ(get(set, byId(7), read), S_OK);
    EXPECT_EQ(Text(read.get().calpwstr.pElems[0]), OLESTR("w"));
}

struct Damaged {
    char const* what;
    std::string bytes;
};

TEST(ForeignSets, DamagedOnesFailCleanly) {
    if (runsOn(System::wine)) GTEST_SKIP() << "it may read behind the end";
    std::string const good = header({summarySet}, {section({{1, codePage(1252)}, {2, text("x")}})});
    auto const with = [&](std::size_t offset, std::string const& bytes) {
        return std::string(good).replace(offset, bytes.size(), bytes);
    };
    for (Damaged const& damaged :
         {Damaged{"empty", ""}, Damaged{"cut in the header", good.substr(0, 20)},
          Damaged{"cut in the list", good.substr(0, 40)},
          Damaged{"cut in the table", good.substr(0, 56)},
          Damaged{"another byte order", with(0, number16(0xfeff))},
          Damaged{"a later version", with(2, number16(7))},
          Damaged{"many sections", with(24, number32(0x7fffffff))},
          Damaged{"a section beyond the end", with(44, number32(0x7fffffff))},
          Damaged{"many properties", with(52, number32(0x7fffffff))}}) {
        FilePlace const place;
        makeFile(place, damaged.bytes);
        auto const root = place.open(look);
        PropertySet set;
        EXPECT_TRUE(FAILED(setsOf(root)->Open(summarySet, look, set.put()))) << damaged.what;
    }
}

}  // namespace
