// Records that their library gives no identifier.

#include <gtest/gtest.h>

#include "records.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

template <typename Interface>
Owned<Interface> queried(IUnknown* object, IID const& id) {
    void* found = nullptr;
    return Owned<Interface>(
        SUCCEEDED(object->QueryInterface(id, &found)) ? static_cast<Interface*>(found) : nullptr);
}

Owned<IRecordInfo> recordOf(ITypeInfo* type) {
    IRecordInfo* info = nullptr;
    EXPECT_EQ(GetRecordInfoFromTypeInfo(type, &info), S_OK);
    return Owned<IRecordInfo>(info);
}

TEST(RecordWithoutId, CanBeGivenOne) {
    auto const library = loadRecords();
    auto const type = typeNamed(library.get(), OLESTR("Nameless"));
    auto const changed = queried<ICreateTypeInfo>(type.get(), IID_ICreateTypeInfo);
    ASSERT_TRUE(changed);
    for (BYTE const last : {0x71, 0x72}) {
        ASSERT_EQ(changed->SetGuid(recordsId(last)), S_OK);
        auto const back = queried<ITypeInfo>(changed.get(), IID_ITypeInfo);
        EXPECT_EQ(back, type);
        EXPECT_TRUE(IsEqualGUID(attributesOf(back.get())->guid, recordsId(last)));
        GUID id{};
        EXPECT_EQ(recordOf(back.get())->GetGuid(&id), S_OK);
        EXPECT_TRUE(IsEqualGUID(id, recordsId(last)));
    }
}

TEST(RecordWithoutId, StaysTheSameRecordWhenItIsGivenAnother) {
    auto const library = loadRecords();
    auto const type = typeNamed(library.get(), OLESTR("Nameless"));
    auto const changed = queried<ICreateTypeInfo>(type.get(), IID_ICreateTypeInfo);
    ASSERT_TRUE(changed);
    ASSERT_EQ(changed->SetGuid(recordsId(0x73)), S_OK);
    auto const first = recordOf(type.get());
    ASSERT_EQ(changed->SetGuid(recordsId(0x74)), S_OK);
    auto const second = recordOf(type.get());
    expectDifference(System::wine, "records are told apart by their identifiers alone", [&] {
        EXPECT_TRUE(first->IsMatchingType(second.get()));
        EXPECT_TRUE(second->IsMatchingType(first.get()));
    });
    EXPECT_FALSE(first->IsMatchingType(recordNamed(OLESTR("Person")).get()));
}

TEST(RecordWithoutId, IsTheOnlyLoadedTypeThatChanges) {
    auto const library = loadRecords();
    auto const person = typeNamed(library.get(), OLESTR("Person"));
    auto const nameless = typeNamed(library.get(), OLESTR("Nameless"));
    auto const changed = queried<ICreateTypeInfo>(nameless.get(), IID_ICreateTypeInfo);
    ASSERT_TRUE(changed);
    expectDifference(System::wine, "all of a loaded type can be changed", [&] {
        EXPECT_FALSE(queried<ICreateTypeInfo>(person.get(), IID_ICreateTypeInfo));
        EXPECT_EQ(changed->SetVersion(1, 2), E_NOTIMPL);
        EXPECT_EQ(changed->LayOut(), E_NOTIMPL);
    });
}

}  // namespace
}  // namespace velk::test
