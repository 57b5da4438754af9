// What a record's information tells of the record.

#include <gtest/gtest.h>

#include "support/value_notation.h"
#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

std::string nameIn(IRecordInfo* info) {
    BSTR name = nullptr;
    EXPECT_EQ(info->GetName(&name), S_OK);
    std::string const result = textIn(name);
    SysFreeString(name);
    return result;
}

TEST(RecordDescription, TellsNameSizeAndIdentifier) {
    struct {
        OLECHAR const* type;
        char const* name;
        ULONG size;
        BYTE id;
    } const cases[] = {
        {OLESTR("Person"), "Person", sizeof(Person), 0x02},
        {OLESTR("Everything"), "Everything", sizeof(Everything), 0x03},
        {OLESTR("Grid"), "Grid", sizeof(Grid), 0x04},
        {OLESTR("Team"), "Team", sizeof(Team), 0x05},
        // An alias stands for the record.
        {OLESTR("Colleague"), "Person", sizeof(Person), 0x02},
    };
    for (auto const& entry : cases) {
        auto const info = recordNamed(entry.type);
        EXPECT_EQ(nameIn(info.get()), entry.name);
        ULONG size = 0;
        EXPECT_EQ(info->GetSize(&size), S_OK);
        EXPECT_EQ(size, entry.size);
        GUID id{};
        EXPECT_EQ(info->GetGuid(&id), S_OK);
        auto const identified = [&] { EXPECT_TRUE(IsEqualGUID(id, recordsId(entry.id))); };
        if (Wide(entry.type) != OLESTR("Colleague")) {
            identified();
        } else {
            expectDifference(System::wine, "an alias has not the record's identifier", identified);
        }
        ITypeInfo* raw = nullptr;
        ASSERT_EQ(info->GetTypeInfo(&raw), S_OK);
        Owned<ITypeInfo> const type(raw);
        EXPECT_EQ(attributesOf(raw)->typekind, TKIND_RECORD);
        EXPECT_EQ(narrow(nameOf(raw).c_str(), nameOf(raw).size()), entry.name);
    }
}

TEST(RecordDescription, ListsItsFields) {
    auto const info = recordNamed(OLESTR("Team"));
    ULONG count = 4711;
    ASSERT_EQ(info->GetFieldNames(&count, nullptr), S_OK);
    ASSERT_EQ(count, 3u);
    // As many as there is room for.
    for (ULONG const room : {0u, 2u, 3u, 9u}) {
        BSTR names[9] = {};
        count = room;
        ASSERT_EQ(info->GetFieldNames(&count, names), S_OK);
        EXPECT_EQ(count, room < 3 ? room : 3u);
        char const* const expected[] = {"lead", "second", "notes"};
        for (ULONG i = 0; i < count; ++i) EXPECT_EQ(textIn(names[i]), expected[i]);
        for (BSTR const name : names) SysFreeString(name);
    }
}

TEST(RecordDescription, MatchesAcrossTwoLoads) {
    auto const person = recordNamed(OLESTR("Person"));
    auto const again = recordNamed(OLESTR("Person"));
    auto const alias = recordNamed(OLESTR("Colleague"));
    auto const team = recordNamed(OLESTR("Team"));
    EXPECT_TRUE(person->IsMatchingType(person.get()));
    EXPECT_TRUE(person->IsMatchingType(again.get()));
    expectDifference(System::wine, "an alias has not the record's identifier",
                     [&] { EXPECT_TRUE(person->IsMatchingType(alias.get())); });
    EXPECT_FALSE(person->IsMatchingType(team.get()));
}

TEST(RecordDescription, OutlivesItsLibrary) {
    auto info = recordNamed(OLESTR("Person"));
    void* other = nullptr;
    ASSERT_EQ(info->QueryInterface(IID_IRecordInfo, &other), S_OK);
    info.reset(static_cast<IRecordInfo*>(other));
    EXPECT_EQ(nameIn(info.get()), "Person");
    EXPECT_EQ(info->QueryInterface(IID_IDispatch, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
}

TEST(RecordDescription, IsRefusedForOtherTypes) {
    auto const library = loadRecords();
    for (auto const* name :
         {OLESTR("Grade"), OLESTR("Cents"), OLESTR("Quantity"), OLESTR("IRegister")}) {
        auto const type = typeNamed(library.get(), name);
        IRecordInfo* info = reinterpret_cast<IRecordInfo*>(1);
        EXPECT_EQ(GetRecordInfoFromTypeInfo(type.get(), &info), E_INVALIDARG);
    }
    IRecordInfo* info = nullptr;
    expectDifference(System::wine, "a record needs no identifier", [&] {
        auto const nameless = typeNamed(library.get(), OLESTR("Nameless"));
        HRESULT const result = GetRecordInfoFromTypeInfo(nameless.get(), &info);
        if (info) info->Release();
        EXPECT_EQ(result, E_INVALIDARG);
    });
    auto const type = typeNamed(library.get(), OLESTR("Person"));
    EXPECT_EQ(GetRecordInfoFromTypeInfo(nullptr, &info), E_INVALIDARG);
    EXPECT_EQ(GetRecordInfoFromTypeInfo(type.get(), nullptr), E_INVALIDARG);
}

TEST(RecordDescription, ComesFromARegisteredLibrary) {
    auto const library = loadRecords();
    IRecordInfo* info = nullptr;
    GUID const id = recordsId(0x01);
    EXPECT_EQ(GetRecordInfoFromGuids(id, 1, 0, 0, recordsId(0x02), &info), TYPE_E_LIBNOTREGISTERED);
    Wide path = recordsPath();
    ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    struct {
        BYTE record;
        HRESULT expected;
    } const cases[] = {
        {0x02, S_OK},
        {0x05, S_OK},
        {0x06, E_INVALIDARG},
        {0x77, TYPE_E_ELEMENTNOTFOUND},
    };
    for (auto const& entry : cases) {
        info = nullptr;
        EXPECT_EQ(GetRecordInfoFromGuids(id, 1, 0, 0, recordsId(entry.record), &info),
                  entry.expected);
        if (!info) continue;
        EXPECT_TRUE(Owned<IRecordInfo>(info)->IsMatchingType(
            recordNamed(entry.record == 2 ? OLESTR("Person") : OLESTR("Team")).get()));
    }
    EXPECT_EQ(GetRecordInfoFromGuids(id, 1, 0, 0, recordsId(0x02), nullptr), E_INVALIDARG);
    EXPECT_EQ(UnRegisterTypeLib(id, 1, 0, 0, SYS_WIN64), S_OK);
}

}  // namespace
}  // namespace velk::test
