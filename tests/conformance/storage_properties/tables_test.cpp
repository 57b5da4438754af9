#include <fstream>

#include "conformance/storage_properties/property_values.h"
#include "support/data_table.h"
#include "support/expected_difference.h"

// What others have written is read, and what makes no sense is refused.

namespace {

using namespace velk::test;

constexpr OLECHAR summaryName[] = OLESTR("\5SummaryInformation"),
                  documentName[] = OLESTR("\5DocumentSummaryInformation");

std::string bytesOfHex(std::string const& digits) {
    std::string bytes, byte;
    for (char const digit : digits) {
        if (digit != ' ') byte += digit;
        if (byte.size() < 2) continue;
        bytes += static_cast<char>(std::stoul(byte, nullptr, 16));
        byte.clear();
    }
    return bytes;
}

/// The bytes of a set, which tests/storage/make_documents.py has made.
std::string setBytes(std::string const& notation) {
    std::ifstream sets(VELK_CRAFTED_FILES "sets");
    for (std::string line; std::getline(sets, line);) {
        if (line.starts_with(notation + '\t')) return bytesOfHex(line.substr(notation.size() + 1));
    }
    ADD_FAILURE() << "no such set: " << notation;
    return {};
}

/// A file whose summary information is these bytes.
void makeFile(FilePlace const& place, std::string const& bytes) {
    auto const root = place.create();
    auto const stream = createStream(*root.get(), summaryName);
    if (!bytes.empty()) write(*stream.get(), bytes);
}

FMTID const& setOf(std::string const& name) {
    return name == "summary"    ? summarySet
           : name == "document" ? documentSet
           : name == "custom"   ? customSet
                                : ownSet;
}

/// A number, or a name.
PROPSPEC specifierOf(std::string const& cell, Text& name) {
    bool const isId = cell.find_first_not_of("0123456789") == cell.npos && !cell.empty();
    if (isId) return byId(static_cast<PROPID>(std::stoul(cell)));
    name.assign(cell.begin(), cell.end());
    return byName(cell == "(null)" ? nullptr : name.c_str());
}

/// Of a sample that our layer or Wine has written, or of bytes.
std::string readProperty(DataRow const& row) {
    FilePlace const place;
    auto const& source = row["bytes"];
    if (source.ends_with(".doc")) {
        std::filesystem::copy_file(std::filesystem::path(VELK_PROPERTY_SET_SAMPLES) / source,
                                   place.file());
    } else {
        makeFile(place, setBytes(source));
    }
    auto const root = place.open(look);
    PropertySet set;
    HRESULT const opened = setsOf(root)->Open(setOf(row["set"]), look, set.put());
    if (opened != S_OK) return codeName(opened);
    if (row["property"] == "count") return std::to_string(listing(set).size());
    PropVariant value;
    Text name;
    HRESULT const code = get(set, specifierOf(row["property"], name), value);
    return code == S_OK ? valueText(value.get()) : codeName(code);
}

TEST(PropertySets, AreReadWhoeverWroteThem) {
    expectTable("storage/property_sets.tsv", readProperty);
}

/// Of a set with the property 7 and the property 8 called "taken".
HRESULT tryCall(DataRow const& row) {
    FilePlace const place;
    auto const root = place.create();
    {
        auto const set = createSet(root, ownSet);
        EXPECT_EQ(put(set, byId(7), number(1)), S_OK);
        EXPECT_EQ(put(set, byName(OLESTR("taken")), number(1)), S_OK);
    }
    auto const &call = row["call"], &argument = row["argument"];
    bool const isNull = argument == "(null)";
    auto const sets = setsOf(root);
    PropertySet set;
    PropertySet other;
    if (call == "create") {
        return sets->Create(summarySet, nullptr, 0, modeOf(row["mode"]),
                            isNull ? nullptr : other.put());
    }
    HRESULT const opened =
        sets->Open(ownSet, modeOf(row["mode"]), call == "open" && isNull ? nullptr : set.put());
    if (call == "open" || FAILED(opened)) return opened;
    Text text;
    auto const specifier = specifierOf(argument, text);
    PROPVARIANT value = number(1);
    PROPID const nine = 9;
    auto* name = text.data();
    if (isNull) name = nullptr;
    if (call == "enumerate") return set->Enum(nullptr);
    if (call == "enumerate sets") return sets->Enum(nullptr);
    if (call == "ask") return set->Stat(nullptr);
    if (call == "commit") return set->Commit(STGC_DEFAULT);
    if (call == "set class") return set->SetClass(ownSet);
    if (call == "delete") return set->DeleteMultiple(1, isNull ? nullptr : &specifier);
    if (call == "read") return set->ReadMultiple(1, &specifier, isNull ? nullptr : &value);
    if (call == "read names") return set->ReadPropertyNames(1, nullptr, nullptr);
    if (call == "name 9") return set->WritePropertyNames(1, &nine, &name);
    if (call == "write") return set->WriteMultiple(1, &specifier, &value, PID_FIRST_USABLE);
    if (call == "write nothing") return set->WriteMultiple(1, nullptr, nullptr, PID_FIRST_USABLE);
    if (call == "write type") {
        value = {};
        value.vt = static_cast<VARTYPE>(std::stoul(argument, nullptr, 16));
        return put(set, byId(5), value);
    }
    PROPSPEC odd{};
    odd.ulKind = 5;
    return call == "write kind 5" ? put(set, odd, value) : E_FAIL;
}

TEST(PropertySets, RefuseWhatMakesNoSense) {
    expectTable("storage/property_refusals.tsv",
                [](DataRow const& row) { return codeName(tryCall(row)); });
}

// What is changed back is as it was, and all else never changed: also what is
// unaligned, unpadded, unknown or cannot be read.
TEST(PropertySets, KeepWhatIsNotChanged) {
    expectDifference("odd-property-sets", [&] {
        std::string const unpadded = "1e100000 02000000 03000000 616200 02000000 6300",
                          odd = "77070000 7768617420697320746869 73",
                          broken = "41000000 f0ffffff 782e2e",
                          names = "01000000 05000000 03000000 6ee900", cut = "02000000 0700";
        FilePlace const place;
        makeFile(place, setBytes(std::string("S{0:hex ") + names + ";1:page 1252;4:hex " + cut +
                                 ";5:i4 1;6:hex " + unpadded + ";7:hex " + odd + ";8:hex " +
                                 broken + "}"));
        auto const stored = [&](LONG value) {
            {
                auto const root = place.open();
                auto const set = openSet(root, summarySet, change);
                EXPECT_EQ(put(set, byId(5), number(value)), S_OK);
            }
            return content(*openStream(*place.open(look).get(), summaryName).get());
        };
        auto const first = stored(1), second = stored(2);
        EXPECT_NE(first, second);
        EXPECT_EQ(first, stored(1));
        // What followed a value without padding does not become its padding.
        for (auto const& kept :
             {names, unpadded, odd, broken, cut + "0000" + "03000000 01000000"}) {
            EXPECT_NE(first.find(bytesOfHex(kept)), std::string::npos) << kept;
        }
        auto const root = place.open(look);
        auto const set = openSet(root, summarySet);
        PropVariant read;
        EXPECT_EQ(get(set, byName(OLESTR("N\xc9")), read), S_OK);
    });
}

// The first one counts, and the second does not come to light.
TEST(PropertySets, LoseBothOfAnIdThatIsThereTwice) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "others have no rule for it";
    FilePlace const place;
    makeFile(place, setBytes("S{1:page 1252;2:i4 1;2:i4 2}"));
    auto const root = place.open();
    auto const two = byId(2);
    EXPECT_EQ(openSet(root, summarySet, change)->DeleteMultiple(1, &two), S_OK);
    PropVariant read;
    EXPECT_EQ(get(openSet(root, summarySet), two, read), S_FALSE);
}

// Neither replaced nor destroyed, asked to or not.
TEST(PropertySets, DoNotReplaceStoragesOfTheirName) {
    if (!runsOn(System::ownLayer)) GTEST_SKIP() << "others replace them";
    FilePlace const place;
    auto const root = place.create();
    Storage inner;
    ASSERT_EQ(root->CreateStorage(summaryName, change, 0, 0, inner.put()), S_OK);
    inner = {};
    for (DWORD const mode : {change, change | STGM_CREATE}) {
        PropertySet set;
        EXPECT_EQ(setsOf(root)->Create(summarySet, nullptr, 0, mode, set.put()),
                  STG_E_FILEALREADYEXISTS);
    }
    EXPECT_EQ(setsOf(root)->Delete(summarySet), STG_E_FILENOTFOUND);
    EXPECT_EQ(root->OpenStorage(summaryName, nullptr, look, nullptr, 0, inner.put()), S_OK);
}

TEST(PropertySets, StandInStreamsThatFollowFromTheirIds) {
    struct Named {
        FMTID id;
        OLECHAR const* name;
    };
    FMTID const media = {
        0x64440492, 0x4C8B, 0x11D1, {0x8B, 0x70, 0x08, 0x00, 0x36, 0xB1, 0x1A, 0x03}};
    for (auto const& named :
         {Named{summarySet, summaryName}, Named{documentSet, documentName},
          Named{customSet, documentName}, Named{media, OLESTR("\5SebiesnrMkudrfcoIaamtykdDa")},
          Named{GUID_NULL, OLESTR("\5AaaaaaaaAaaaaaaaAaaaaaaaAa")}}) {
        FilePlace const place;
        auto const root = place.create();
        createSet(root, named.id);
        EXPECT_TRUE(openStream(*root.get(), named.name));
    }
}

// A client that changes a document commits the set and nothing else.
TEST(PropertySets, CommitIsSeenByOthersAtOnce) {
    FilePlace const place;
    {
        auto const root = place.create();
        EXPECT_EQ(put(createSet(root, ownSet), byId(2), number(1)), S_OK);
    }
    auto const root = place.open(modeOf("change deny-write swmr"));
    auto const set = openSet(root, ownSet, change);
    EXPECT_EQ(put(set, byId(2), number(2)), S_OK);
    auto const seen = [&] {
        PropVariant read;
        auto const reader = place.open(modeOf("read deny-none swmr"));
        EXPECT_EQ(get(openSet(reader, ownSet), byId(2), read), S_OK);
        return read.get().lVal;
    };
    EXPECT_EQ(seen(), 1);
    EXPECT_EQ(set->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(seen(), 2);
}

TEST(PropVariants, OfUnknownTypesAreEmptiedWithAnError) {
    for (int const type : {0x123, VT_BYREF | VT_I4}) {
        PROPVARIANT value{};
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(PropVariantClear(&value), STG_E_INVALIDPARAMETER) << type;
        EXPECT_EQ(value.vt, VT_EMPTY) << type;
    }
    EXPECT_EQ(PropVariantClear(nullptr), S_OK);
}

}  // namespace
