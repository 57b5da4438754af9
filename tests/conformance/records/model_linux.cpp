// Records beside a model: the notation of each field. Other systems put few
// kinds of fields, and neither copy nor release all of them.

#include <array>
#include <map>
#include <memory>
#include <regex>

#include <gtest/gtest.h>

#include "records.h"
#include "support/data_table.h"
#include "support/fake_objects.h"
#include "support/random_operations.h"

namespace velk::test {
namespace {

/// What goes into a field: values of a type, a Person, a list of either
/// ("BSTR[]"), or a fixed array of these lengths.
struct Field {
    char const* name;
    std::string kind;
    std::vector<ULONG> lengths = {};

    bool isList() const { return kind.ends_with("[]"); }
    std::string element() const { return isList() ? kind.substr(0, kind.size() - 2) : kind; }
};
std::map<std::string, std::vector<Field>> const recordFields = {
    {"Everything", {{"i1", "I1"},           {"ui1", "UI1"},
                    {"i2", "I2"},           {"ui2", "UI2"},
                    {"i4", "I4"},           {"ui4", "UI4"},
                    {"i8", "I8"},           {"ui8", "UI8"},
                    {"native", "INT"},      {"unsignedNative", "UINT"},
                    {"single", "R4"},       {"real", "R8"},
                    {"money", "CY"},        {"day", "DATE"},
                    {"truth", "BOOL"},      {"code", "ERROR"},
                    {"text", "BSTR"},       {"dispatch", "DISPATCH"},
                    {"unknown", "UNKNOWN"}, {"any", "VARIANT"},
                    {"exact", "DECIMAL"},   {"owner", "Person"},
                    {"rank", "I4"},         {"price", "I4"}}},
    {"Grid",
     {{"cells", "I2", {4, 2}}, {"labels", "BSTR", {3}}, {"people", "Person", {2}}, {"last", "I4"}}},
    {"Objects", {{"dispatch", "DISPATCH"}, {"unknown", "UNKNOWN"}}},
    {"Memo", {{"any", "VARIANT"}, {"number", "I4"}}},
    {"Lists", {{"texts", "BSTR[]"}, {"people", "Person[]"}}},
    {"Team", {{"lead", "Person"}, {"second", "Person"}, {"notes", "VARIANT"}}}};

std::map<std::string, std::array<char const*, 2>> const notations = {
    {"I1", {"I1:-5", "I1:127"}},        {"UI1", {"UI1:250", "UI1:1"}},
    {"I2", {"I2:-300", "I2:9"}},        {"UI2", {"UI2:65000", "UI2:1"}},
    {"I4", {"I4:-70000", "I4:17"}},     {"UI4", {"UI4:4000000000", "UI4:2"}},
    {"I8", {"I8:-5000000000", "I8:3"}}, {"UI8", {"UI8:18446744073709551615", "UI8:4"}},
    {"INT", {"INT:-8", "INT:8"}},       {"UINT", {"UINT:9", "UINT:4294967295"}},
    {"R4", {"R4:1.5", "R4:-0.25"}},     {"R8", {"R8:-2.25", "R8:1e+300"}},
    {"CY", {"CY:1.25", "CY:-0.0001"}},  {"DATE", {"DATE:2.25", "DATE:-1.5"}},
    {"BOOL", {"BOOL:-1", "BOOL:0"}},    {"ERROR", {"ERROR:80070005", "ERROR:0"}},
    {"BSTR", {"BSTR:text", "BSTR:"}},   {"DECIMAL", {"DECIMAL:1.50", "DECIMAL:-7"}}};

void fillPerson(void* place, unsigned number) {
    *static_cast<Person*>(place) = {newText(number % 2 == 0 ? "Ada" : "Bob"),
                                    static_cast<LONG>(number % 90)};
}

void makeRecord(Value& value, char const* type, unsigned number) {
    auto info = recordNamed(type);
    value->pvRecord = info->RecordCreate();
    if (std::string("Person") == type) fillPerson(value->pvRecord, number);
    value->pRecInfo = info.detach();
    value->vt = VT_RECORD;
}

/// An array of numbers, texts or persons.
void makeArray(Value& value, std::string const& element, std::vector<ULONG> const& lengths,
               unsigned number) {
    std::vector<SAFEARRAYBOUND> bounds;
    std::size_t count = 1;
    for (ULONG const length : lengths) {
        bounds.push_back({length, 0});
        count *= length;
    }
    VARTYPE const type = element == "Person" ? VARTYPE{VT_RECORD} : typeCalled(element);
    com::ComPtr<IRecordInfo> info;
    if (type == VT_RECORD) info = recordNamed("Person");
    value->vt = static_cast<VARTYPE>(VT_ARRAY | type);
    value->parray =
        SafeArrayCreateEx(type, static_cast<UINT>(bounds.size()), bounds.data(), info.get());
    auto* place = static_cast<BYTE*>(value->parray->pvData);
    for (; count > 0; --count, place += value->parray->cbElements, ++number) {
        if (type == VT_RECORD) fillPerson(place, number);
        if (type == VT_BSTR) *reinterpret_cast<BSTR*>(place) = newText(number % 2 == 0 ? "a" : "b");
        if (type == VT_I2) *reinterpret_cast<SHORT*>(place) = static_cast<SHORT>(number);
    }
}

/// What a field is to hold, and the object that it refers to.
struct Content {
    std::string notation;
    int object = -1;
};

class RecordModel {
  public:
    explicit RecordModel(std::string const& type) : type_(type), fields_(recordFields.at(type)) {
        Record<void> const empty(type.c_str());
        for (auto const& field : fields_) {
            Value content;
            expectCode(empty.info->GetField(empty.get(), wide(field.name).c_str(), &content), S_OK,
                       field.name);
            empty_.push_back({content.notation()});
        }
        for (Side& side : sides_) {
            side.record = std::make_unique<Record<void>>(type.c_str());
            side.contents = empty_;
        }
    }

    std::string run(Operation const& operation) {
        Side& side = sides_[operation.place / 64 % 2];
        Side& other = sides_[1 - operation.place / 64 % 2];
        auto& info = *side.record->info;
        auto const index = operation.place % fields_.size();
        switch (operation.kind % 10) {
            case 0:
                expectCode(info.RecordClear(side.record->get()), S_OK, "clear");
                clear(side);
                return "clear";
            case 1:
                expectCode(info.RecordCopy(side.record->get(), other.record->get()), S_OK, "copy");
                other.contents = side.contents;
                return "copy over the other";
            case 2:
                expectCode(info.RecordCopy(side.record->get(), side.record->get()), S_OK, "self");
                return "copy over itself";
            case 3:
                return throughArray(side, other);
            case 4:
                return refuse(side, fields_[index], operation.what);
            default:
                return put(side, index, operation);
        }
    }

    void check() {
        ULONG references[] = {1, 1};
        for (Side const& side : sides_) {
            std::string expected = type_;
            for (std::size_t i = 0; i < fields_.size(); ++i) {
                expected += (i == 0 ? "{" : ", ") + std::string(fields_[i].name) + '=' +
                            side.contents[i].notation;
                if (side.contents[i].object >= 0) ++references[side.contents[i].object];
            }
            auto const found = side.record->notation();
            expectModel(found == expected + '}', found + " instead of " + expected + '}');
        }
        for (int i = 0; i < 2; ++i) {
            expectCode(static_cast<long>(objects_[i].references), static_cast<long>(references[i]),
                       "references");
        }
    }

  private:
    struct Side {
        std::unique_ptr<Record<void>> record;
        std::vector<Content> contents;
    };

    Content fill(std::string const& kind, Field const& field, unsigned number, Value& value) {
        Content content;
        auto const known = notations.find(kind);
        if (field.isList() || !field.lengths.empty()) {
            makeArray(value, field.element(),
                      field.isList() ? std::vector<ULONG>{number % 3} : field.lengths, number);
        } else if (kind == "Person") {
            makeRecord(value, "Person", number);
        } else if (kind == "DISPATCH" || kind == "UNKNOWN") {
            value->vt = typeCalled(kind);
            content.object = static_cast<int>(number % 3) - 1;
            if (content.object >= 0) {
                value->pdispVal = &objects_[content.object];
                value->pdispVal->AddRef();
            }
        } else if (known != notations.end()) {
            Value drawn(known->second[number % 2]);
            VariantCopy(&value, &drawn);
        } else {
            // Whatever a VARIANT holds.
            char const* const kinds[] = {"I2", "BSTR", "DISPATCH", "UNKNOWN", "Person", "DECIMAL"};
            Field const list{"", "BSTR[]"};
            bool const isList = number % 7 == 6;
            return fill(isList ? list.kind : kinds[number % 7], isList ? list : Field{"", ""},
                        number / 7, value);
        }
        content.notation = value.notation();
        return content;
    }

    HRESULT putField(Side& side, std::string name, VARIANT& value, unsigned number) {
        if (number % 5 == 0) {
            for (char& sign : name) sign = static_cast<char>(std::toupper(sign));
        }
        return side.record->info->PutField(
            number % 2 == 0 ? INVOKE_PROPERTYPUT : INVOKE_PROPERTYPUTREF, side.record->get(),
            wide(name).c_str(), &value);
    }

    std::string put(Side& side, std::size_t index, Operation const& operation) {
        auto const& field = fields_[index];
        Value value;
        auto const content = fill(field.kind, field, operation.what, value);
        // Indices of a fixed array need not be those of the field.
        if (!field.lengths.empty()) value->parray->rgsabound[0].lLbound = operation.size % 4 - 2;
        VARIANT reference{};
        reference.vt = static_cast<VARTYPE>(VT_BYREF | VT_VARIANT);
        reference.pvarVal = &value;
        VARIANT& given = operation.size % 3 == 0 ? reference : *value;
        expectCode(putField(side, field.name, given, operation.size), S_OK, field.name);
        side.contents[index] = content;
        return std::string("put ") + field.name + ' ' + content.notation;
    }

    std::string refuse(Side& side, Field const& field, unsigned number) {
        Value value;
        HRESULT expected = DISP_E_TYPEMISMATCH;
        bool const array = field.isList() || !field.lengths.empty();
        std::string name = field.name;
        switch (field.kind == "VARIANT" ? 0 : number % 4) {
            case 0:
                name += "_";
                expected = TYPE_E_FIELDNOTFOUND;
                break;
            case 1:
                value->vt = array ? VARTYPE{VT_ARRAY | VT_BSTR} : VARTYPE{VT_NULL};
                if (field.kind == "BSTR[]") value->vt = VT_I4;
                break;
            case 2:
                makeRecord(value, "Spot", number);
                break;
            default:
                // One element too many, or another type of elements.
                makeArray(value, array && !field.isList() ? field.element() : "I2",
                          field.lengths.empty() ? std::vector<ULONG>{2} : field.lengths, number);
                if (!field.lengths.empty()) ++value->parray->rgsabound[0].cElements;
        }
        VARIANT const before = *value;
        expectCode(putField(side, name, *value, number), expected, name);
        if (!field.lengths.empty() && (before.vt & VT_ARRAY) && before.parray) {
            --value->parray->rgsabound[0].cElements;
        }
        return "refuse " + name;
    }

    /// Numbers stay, in records within the record too.
    void clear(Side& side) const {
        static std::regex const names("name=BSTR:[^,]*");
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            auto const& kind = fields_[i].kind;
            auto& content = side.contents[i];
            if (kind == "Person") {
                content.notation = std::regex_replace(content.notation, names, "name=BSTR:");
            } else if (kind == "BSTR" || !notations.contains(kind)) {
                content = empty_[i];
            }
        }
    }

    /// By a VARIANT, an array and its copy into the other record.
    static std::string throughArray(Side& side, Side& other) {
        SAFEARRAYBOUND bound{2, 0};
        Value array, copy, single;
        array->vt = VT_ARRAY | VT_RECORD;
        array->parray = SafeArrayCreateEx(VT_RECORD, 1, &bound, side.record->info.get());
        VARIANT borrowed = side.record->value();
        expectCode(VariantCopy(&single, &borrowed), S_OK, "copy the value");
        LONG index = 1;
        expectCode(SafeArrayPutElement(array->parray, &index, single->pvRecord), S_OK, "put it");
        expectCode(VariantCopy(&copy, &array), S_OK, "copy the array");
        expectCode(SafeArrayGetElement(copy->parray, &index, other.record->get()), S_OK, "get it");
        other.contents = side.contents;
        SAFEARRAYBOUND shorter{1, 0};
        expectCode(SafeArrayRedim(copy->parray, &shorter), S_OK, "cut it off");
        return "copy through an array";
    }

    std::string type_;
    std::vector<Field> const& fields_;
    std::vector<Content> empty_;
    // Before the records, which may hold references to their end.
    FakeDispatch objects_[2];
    Side sides_[2];
};

TEST(RecordFields, HoldWhatAModelHolds) {
    searchOperations(120, 40, [](std::vector<Operation> const& operations, std::string& log) {
        std::unique_ptr<RecordModel> model;
        for (auto const& operation : operations) {
            if (!model || operation.kind % 40 == 0) {
                auto const chosen =
                    std::next(recordFields.begin(), operation.what % recordFields.size());
                model = std::make_unique<RecordModel>(chosen->first);
                log += "new " + chosen->first + '\n';
            } else {
                log += model->run(operation) + '\n';
            }
            model->check();
        }
    });
}

TEST(RecordFields, ConvertWhatIsPut) {
    expectTable("records/puts.tsv", [](DataRow const& row) {
        Record<Everything> const record("Everything");
        record->i4 = 17;
        auto const name = wide(row["field"]);
        Value value(row["value"]);
        HRESULT const result =
            record.info->PutField(INVOKE_PROPERTYPUT, record.get(), name.c_str(), &value);
        Value content;
        EXPECT_EQ(record.info->GetField(record.get(), name.c_str(), &content), S_OK);
        return resultName(result) + ' ' + content.notation();
    });
}

// Their sizes and places are those of this process.
TEST(RecordFields, OfLibrariesFor32BitsStandAsHere) {
    for (auto const& [type, fields] : recordFields) {
        Record<void> const record(type.c_str());
        for (auto const& field : fields) {
            auto const known = notations.find(field.kind);
            if (known == notations.end() || !field.lengths.empty()) continue;
            Value value(known->second[0]);
            EXPECT_EQ(record.info->PutField(INVOKE_PROPERTYPUT, record.get(),
                                            wide(field.name).c_str(), &value),
                      S_OK);
        }
        auto const other = recordNamed(type.c_str(), true);
        VARIANT seen = record.value();
        seen.pRecInfo = other.get();
        EXPECT_EQ(notationOf(seen), record.notation());
        ULONG size = 0, otherSize = 0;
        EXPECT_EQ(record.info->GetSize(&size), other->GetSize(&otherSize));
        EXPECT_EQ(size, otherSize) << type;
    }
}

TEST(RecordFields, OfFixedArraysHaveTheirIndices) {
    Record<Grid> const grid("Grid");
    for (int row = 0; row < 4; ++row) {
        for (int column = 0; column < 2; ++column) {
            grid->cells[row][column] = static_cast<SHORT>(10 * row + column);
        }
    }
    Value cells;
    ASSERT_EQ(grid.info->GetField(grid.get(), wide("cells").c_str(), &cells), S_OK);
    EXPECT_EQ(cells.notation(),
              "[0..3, 0..1]{I2:0, I2:10, I2:20, I2:30, I2:1, I2:11, I2:21, I2:31}");
    static_cast<SHORT*>(cells->parray->pvData)[6] = 7;
    EXPECT_EQ(grid.info->PutField(INVOKE_PROPERTYPUT, grid.get(), wide("cells").c_str(), &cells),
              S_OK);
    EXPECT_EQ(grid->cells[2][1], 7);
}

// Unions and plain pointers belong to whoever set them, and have no VARIANT. A
// field of a certain interface takes objects that have it.
TEST(RecordFields, WithoutAValue) {
    struct Odd {
        double amount;
        LONG* pointer;
        IUnknown* typed;
    };
    Record<Odd> const odd("Odd");
    Record<Odd> const copy("Odd");
    LONG target = 5;
    FakeDispatch object;
    odd->amount = 2.5;
    odd->pointer = &target;
    Value value;
    value->vt = VT_DISPATCH;
    value->pdispVal = &object;
    object.AddRef();
    EXPECT_EQ(odd.notation(), "Odd{amount=badtype, pointer=badtype, typed=DISPATCH:null}");
    for (char const* const name : {"amount", "pointer", "typed"}) {
        EXPECT_EQ(odd.info->PutField(INVOKE_PROPERTYPUTREF, odd.get(), wide(name).c_str(), &value),
                  name == std::string("typed") ? DISP_E_TYPEMISMATCH : DISP_E_BADVARTYPE);
    }
    EXPECT_EQ(odd.info->RecordCopy(odd.get(), copy.get()), S_OK);
    EXPECT_EQ(copy->amount, 2.5);
    EXPECT_EQ(copy->pointer, &target);
    object.answersDispatch = false;
    Record<Objects> const objects("Objects");
    value->vt = VT_UNKNOWN;
    EXPECT_TRUE(FAILED(objects.info->PutField(INVOKE_PROPERTYPUTREF, objects.get(),
                                              wide("dispatch").c_str(), &value)));
}

TEST(RecordFields, KeepALockedArray) {
    Record<SAFEARRAY*> const lists("Lists");
    *lists.get() = SafeArrayCreateVector(VT_BSTR, 0, 1);
    ASSERT_EQ(SafeArrayLock(*lists.get()), S_OK);
    Value texts;
    makeArray(texts, "BSTR", {2}, 0);
    auto const name = wide("texts");
    EXPECT_EQ(lists.info->PutField(INVOKE_PROPERTYPUT, lists.get(), name.c_str(), &texts),
              DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(lists.info->RecordClear(lists.get()), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(lists.notation(), "Lists{texts=[0..0]{BSTR}, people=[null]}");
    ASSERT_EQ(SafeArrayUnlock(*lists.get()), S_OK);
}

}  // namespace
}  // namespace velk::test
