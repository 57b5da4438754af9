#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "sample_objects.h"

// The script list "qxttools.array".

namespace {

using velk::test::call;
using velk::test::Outcome;
using velk::test::reference;

constexpr unsigned method = mzCallMethod;
constexpr unsigned get = mzCallPropertyGet;
constexpr unsigned put = mzCallPropertyPut;

class Array : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(mzComServerInit(), mzSuccess);
        ASSERT_EQ(mzComCreateObject("qxttools.array", mzIDispatch::interfaceId(), list_),
                  mzSuccess);
    }
    void TearDown() override { EXPECT_EQ(mzComServerDone(), mzSuccess); }

    void fill(std::initializer_list<mzComVariantC> values) {
        for (auto const& value : values) {
            EXPECT_EQ(call(list_.iface(), "Add", method, {value}).code, mzSuccess);
        }
    }

    static std::string contents(mzIUnknown* list) {
        mzComPtrT<mzIIterable> const walk{mzComPtrC(list)};
        mzComPtrT<mzIIterator> iterator;
        EXPECT_EQ(walk->createIterator(iterator), mzSuccess);
        std::string text;
        mzComVariantC value;
        while (iterator->next(value) == mzSuccess) {
            text += Outcome{0, value, {}}.text() + ";";
        }
        return text;
    }

    mzComPtrC list_;
};

TEST_F(Array, Members) {
    struct Row {
        char const* what;
        char const* name;
        unsigned kind;
        std::vector<mzComVariantC> args;
        char const* text;      // of the value, or of the exception after "!"
        char const* contents;  // of the list afterwards
    };
    // One list, one step after the other.
    Row const rows[] = {
        {"empty", "Count", get, {}, "0", ""},
        {"no last index", "UBound", method, {}, "-1", ""},
        {"nothing to read",
         "Item",
         method,
         {0},
         "!The index 0 is outside the list of 0 values",
         ""},
        {"add gives the index", "Add", method, {"a"}, "0", "a;"},
        {"add another", "Add", method, {"c"}, "1", "a;c;"},
        {"insert", "InsertAt", method, {1, "b"}, "", "a;b;c;"},
        {"insert at the end", "InsertAt", method, {3, "d"}, "", "a;b;c;d;"},
        {"insert beyond",
         "InsertAt",
         method,
         {5, "x"},
         "!The index 5 is outside the list of 4 values",
         "a;b;c;d;"},
        {"length", "Length", get, {}, "4", "a;b;c;d;"},
        {"bounds", "LBound", method, {}, "0", "a;b;c;d;"},
        {"upper", "UBound", method, {}, "3", "a;b;c;d;"},
        {"item", "Item", method, {3}, "d", "a;b;c;d;"},
        {"default", "", method, {1}, "b", "a;b;c;d;"},
        {"index as text", "", get, {"2"}, "c", "a;b;c;d;"},
        {"below",
         "Item",
         method,
         {-1},
         "!The index -1 is outside the list of 4 values",
         "a;b;c;d;"},
        {"put", "Item", put, {0, "A"}, "", "A;b;c;d;"},
        {"default put", "", put, {3, "D"}, "", "A;b;c;D;"},
        {"put beyond",
         "Item",
         put,
         {4, "x"},
         "!The index 4 is outside the list of 4 values",
         "A;b;c;D;"},
        {"find", "Find", method, {"c"}, "2", "A;b;c;D;"},
        {"case counts", "Find", method, {"C"}, "-1", "A;b;c;D;"},
        {"find from", "Find", method, {"c", 3}, "-1", "A;b;c;D;"},
        {"find at the end", "Find", method, {"c", 4}, "-1", "A;b;c;D;"},
        {"find beyond",
         "Find",
         method,
         {"c", 5},
         "!The index 5 is outside the list of 4 values",
         "A;b;c;D;"},
        {"remove a value", "Remove", method, {"b"}, "-1", "A;c;D;"},
        {"remove none", "Remove", method, {"b"}, "0", "A;c;D;"},
        {"remove at", "RemoveAt", method, {0}, "", "c;D;"},
        {"remove beyond",
         "RemoveAt",
         method,
         {2},
         "!The index 2 is outside the list of 2 values",
         "c;D;"},
        {"longer", "ReDim", method, {3}, "", "c;D;;;"},
        {"shorter", "ReDim", method, {0}, "", "c;"},
        {"too short", "ReDim", method, {-2}, "!The list cannot end at the index -2", "c;"},
        {"too long",
         "ReDim",
         method,
         {2147483647},
         "!The list cannot end at the index 2147483647",
         "c;"},
        {"none", "ReDim", method, {-1}, "", ""},
        {"remove all", "RemoveAll", method, {}, "", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        mzComVariantArrayC args;
        for (auto const& arg : row.args) {
            args.append(arg);
        }
        Outcome outcome{0, {}, {}};
        mzComPtrT<mzIException> exception;
        mzComPtrT<mzIDispatch> const list{list_};
        outcome.code = list->invokeByName(row.name, row.kind, args, outcome.value, exception);
        bool const isFailure = row.text[0] == '!';
        EXPECT_EQ(outcome.code, isFailure ? mzFailure : mzSuccess);
        ASSERT_EQ(exception.isValid(), isFailure);
        EXPECT_EQ(isFailure ? exception->description().toUtf8() : outcome.text(),
                  row.text + isFailure);
        EXPECT_EQ(contents(list_.iface()), row.contents);
    }
}

TEST_F(Array, CopiesAreNewLists) {
    fill({1, 2, 3, 4});
    struct Row {
        std::initializer_list<mzComVariantC> args;
        char const* contents;
    };
    for (Row const& row : {Row{{}, "1;2;3;4;"}, Row{{2}, "3;4;"}, Row{{4}, ""}, Row{{1, 2}, "2;3;"},
                           Row{{3, 9}, "4;"}, Row{{0, 0}, ""}}) {
        mzComPtrT<mzIUnknown> copy;
        ASSERT_EQ(call(list_.iface(), row.args.size() == 0 ? "Copy" : "copy", method, row.args)
                      .value.get(copy),
                  mzSuccess);
        EXPECT_NE(copy.iface(), list_.iface());
        EXPECT_EQ(contents(copy.iface()), row.contents);
    }
    EXPECT_EQ(call(list_.iface(), "Copy", method, {5}).exception,
              "The index 5 is outside the list of 4 values");
    EXPECT_EQ(call(list_.iface(), "Copy", method, {1, -1}).exception,
              "The length of a copy cannot be negative");
}

TEST_F(Array, ValuesAreEqualAsKeysAre) {
    fill({"3", 3, reference(list_.iface()), {}, 2.5});
    EXPECT_EQ(call(list_.iface(), "Find", method, {3.0}).integer(), 1);
    EXPECT_EQ(call(list_.iface(), "Find", method, {"3"}).integer(), 0);
    EXPECT_EQ(call(list_.iface(), "Find", method, {mzComVariantC()}).integer(), 3);
    EXPECT_EQ(call(list_.iface(), "Find", method, {reference(list_.iface())}).integer(), 2);
    // The list refers to itself now; without this it would live for ever.
    EXPECT_EQ(call(list_.iface(), "RemoveAll", method).code, mzSuccess);
}

TEST_F(Array, AnIteratorSeesChangesAndStartsAgain) {
    fill({1, 2});
    mzComPtrT<mzIIterable> const walk{list_};
    mzComPtrT<mzIIterator> iterator;
    ASSERT_EQ(walk->createIterator(iterator), mzSuccess);
    mzComVariantC value;
    EXPECT_EQ(iterator->next(value), mzSuccess);
    fill({3});
    EXPECT_EQ(iterator->next(value), mzSuccess);
    EXPECT_EQ(iterator->next(value), mzSuccess);
    EXPECT_EQ(value.getInt(), 3);
    EXPECT_EQ(iterator->next(value), mzFailure);
    EXPECT_EQ(iterator->reset(), mzSuccess);
    EXPECT_EQ(iterator->next(value), mzSuccess);
    EXPECT_EQ(value.getInt(), 1);
}

}  // namespace
