// Records as a whole: made, emptied, copied and destroyed with all they hold.

#include <algorithm>

#include "content.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

void fillPerson(Person& person) {
    person = {newText(OLESTR("Ada")), 36};
}
bool isCopy(Person const& copy, Person const& original) {
    return copy.name != original.name && textIn(copy.name) == "Ada" && copy.age == 36;
}
Content const contents[] = {
    {OLESTR("Person"), [](void* record, FakeDispatch&) { fillPerson(as<Person>(record)); }, 0,
     [](void const* record) { return !as<Person>(record).name; },
     [](void const* copy, void const* original) {
         return isCopy(as<Person>(copy), as<Person>(original));
     }},
    {OLESTR("Objects"),
     [](void* record, FakeDispatch& object) {
         object.AddRef();
         object.AddRef();
         as<Objects>(record) = {&object, &object};
     },
     2,
     [](void const* record) {
         return !as<Objects>(record).dispatch && !as<Objects>(record).unknown;
     },
     [](void const* copy, void const* original) {
         return as<Objects>(copy).dispatch == as<Objects>(original).dispatch &&
                as<Objects>(copy).unknown == as<Objects>(original).unknown;
     }},
    {OLESTR("Memo"),
     [](void* record, FakeDispatch& object) {
         object.AddRef();
         auto& memo = as<Memo>(record);
         memo.any.vt = VT_DISPATCH;
         memo.any.pdispVal = &object;
         memo.number = 7;
     },
     1, [](void const* record) { return as<Memo>(record).any.vt == VT_EMPTY; },
     [](void const* copy, void const* original) {
         auto const& memo = as<Memo>(copy);
         return memo.any.vt == VT_DISPATCH && memo.number == 7 &&
                memo.any.pdispVal == as<Memo>(original).any.pdispVal;
     },
     false, false},
    {OLESTR("Guest"),
     [](void* record, FakeDispatch&) {
         fillPerson(as<Guest>(record).who);
         as<Guest>(record).number = 7;
     },
     0, [](void const* record) { return !as<Guest>(record).who.name; },
     [](void const* copy, void const* original) {
         return isCopy(as<Guest>(copy).who, as<Guest>(original).who) && as<Guest>(copy).number == 7;
     },
     false, false},
    {OLESTR("Grid"),
     [](void* record, FakeDispatch&) {
         auto& grid = as<Grid>(record);
         grid.cells[3][1] = 31;
         grid.labels[2] = newText(OLESTR("label"));
         fillPerson(grid.people[1]);
         grid.last = 9;
     },
     0,
     [](void const* record) {
         return !as<Grid>(record).labels[2] && !as<Grid>(record).people[1].name;
     },
     [](void const* copy, void const* original) {
         auto const& grid = as<Grid>(copy);
         return grid.cells[3][1] == 31 && grid.last == 9 && !grid.labels[0] &&
                grid.labels[2] != as<Grid>(original).labels[2] &&
                textIn(grid.labels[2]) == "label" &&
                isCopy(grid.people[1], as<Grid>(original).people[1]);
     },
     false, false},
};

// Runs assertions of which Wine is known to fail one, unless `wineToo`.
void expectUnlessWine(bool wineToo, std::string_view reason, std::function<void()> const& block) {
    if (wineToo) return block();
    expectDifference(System::wine, reason, block);
}

bool isZero(void const* bytes, std::size_t size) {
    auto const* const start = static_cast<unsigned char const*>(bytes);
    return std::all_of(start, start + size, [](unsigned char byte) { return byte == 0; });
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Kinds, RecordContent, testing::ValuesIn(contents), nameOfContent);

TEST_P(RecordContent, IsClearedInItsPlace) {
    auto const& content = GetParam();
    EXPECT_EQ(held(), content.references);
    EXPECT_EQ(record.info->RecordClear(record.get()), S_OK);
    expectUnlessWine(content.wineReleases, "some fields of a record are not released", [&] {
        EXPECT_TRUE(content.isEmpty(record.get()));
        EXPECT_EQ(held(), 0u);
    });
    // Wine leaves pointers to what it has released.
    if (!content.isEmpty(record.get())) record.info->RecordInit(record.get());
    EXPECT_EQ(record.info->RecordClear(record.get()), S_OK);
}

TEST_P(RecordContent, IsCopiedDeeply) {
    auto const& content = GetParam();
    expectUnlessWine(content.wineCopies, "some fields of a record are not copied", [&] {
        void* made = nullptr;
        ASSERT_EQ(record.info->RecordCreateCopy(record.get(), &made), S_OK);
        EXPECT_TRUE(content.isCopy(made, record.get()));
        EXPECT_EQ(held(), 2 * content.references);
        EXPECT_EQ(record.info->RecordDestroy(made), S_OK);
        EXPECT_EQ(held(), content.references);
    });
}

TEST_P(RecordContent, GoesWhenAnotherIsCopiedOverIt) {
    auto const& content = GetParam();
    Record<void> const empty(content.record);
    expectUnlessWine(content.wineCopies, "some fields of a record are not copied", [&] {
        EXPECT_EQ(record.info->RecordCopy(empty.get(), record.get()), S_OK);
        EXPECT_TRUE(content.isEmpty(record.get()));
        EXPECT_EQ(held(), 0u);
    });
}

TEST(EmptyRecords, AreZero) {
    Record<Everything> const made(OLESTR("Everything"));
    EXPECT_TRUE(isZero(made.get(), sizeof(Everything)));
    // Whatever the memory held is no content.
    alignas(8) unsigned char memory[sizeof(Everything) + 8];
    std::fill(std::begin(memory), std::end(memory), 0xcd);
    EXPECT_EQ(made.info->RecordInit(memory), S_OK);
    EXPECT_TRUE(isZero(memory, sizeof(Everything)));
    EXPECT_EQ(memory[sizeof(Everything)], 0xcd);
}

TEST(EmptyRecords, AreCopied) {
    for (auto const* name : {OLESTR("Everything"), OLESTR("Team"), OLESTR("Person")}) {
        Record<void> const empty(name);
        Record<void> const other(name);
        ULONG size = 0;
        ASSERT_EQ(empty.info->GetSize(&size), S_OK);
        EXPECT_EQ(empty.info->RecordCopy(empty.get(), other.get()), S_OK);
        EXPECT_TRUE(isZero(other.get(), size));
    }
}

TEST(RecordCopies, OverThemselvesChangeNothing) {
    Record<Person> const person(OLESTR("Person"));
    person->name = newText(OLESTR("Ada"));
    EXPECT_EQ(person.info->RecordCopy(person.get(), person.get()), S_OK);
    expectDifference(System::wine, "a record copied over itself is emptied",
                     [&] { EXPECT_EQ(textIn(person->name), "Ada"); });
}

TEST(RecordCopies, NeedARecord) {
    auto const info = recordNamed(OLESTR("Person"));
    Person person{};
    void* made = nullptr;
    EXPECT_EQ(info->RecordInit(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->RecordClear(nullptr), E_INVALIDARG);
    EXPECT_EQ(info->RecordCopy(nullptr, &person), E_INVALIDARG);
    EXPECT_EQ(info->RecordCopy(&person, nullptr), E_INVALIDARG);
    EXPECT_EQ(info->RecordCreateCopy(nullptr, &made), E_INVALIDARG);
    EXPECT_EQ(info->RecordCreateCopy(&person, nullptr), E_INVALIDARG);
    EXPECT_EQ(info->RecordDestroy(nullptr), E_INVALIDARG);
}

}  // namespace velk::test
