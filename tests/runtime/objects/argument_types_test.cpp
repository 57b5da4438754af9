#include <array>

#include <gtest/gtest.h>

#include "sample_objects.h"

// What an invoker reads from an argument, with and without conversion.

namespace {

using velk::test::reference;
using velk::test::Sample;

template <class T>
bool reads(mzComVariantC const& value, bool convert) {
    auto cast = proxyAutoTypeCastC::argument(value);
    try {
        cast.get<T>(convert);
        return true;
    } catch (mzAutoTypeCastExceptionC const&) {
        return false;
    }
}

TEST(ArgumentTypes, ReadAndConvert) {
    mzComPtrT<Sample> sample(new Sample);
    struct Row {
        char const* what;
        mzComVariantC value;
        // Exactly as integer, double, text, object; then with conversion.
        std::array<bool, 4> exact;
        std::array<bool, 4> converted;
    };
    Row const rows[] = {
        {"empty", {}, {false, false, false, false}, {true, true, true, false}},
        {"integer", 7, {true, false, false, false}, {true, true, true, false}},
        {"double", 7.5, {false, true, false, false}, {true, true, true, false}},
        {"text of a number", "7", {false, false, true, false}, {true, true, true, false}},
        {"other text", "seven", {false, false, true, false}, {false, false, true, false}},
        {"object",
         reference(sample->getIUnknown()),
         {false, false, false, true},
         {false, false, false, true}},
        {"variable with a number",
         mzComVariantC::createSymbolRef(7),
         {true, false, false, false},
         {true, true, true, false}},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.what);
        for (bool const convert : {false, true}) {
            auto const& wanted = convert ? row.converted : row.exact;
            EXPECT_EQ(reads<int>(row.value, convert), wanted[0]) << "convert " << convert;
            EXPECT_EQ(reads<double>(row.value, convert), wanted[1]) << "convert " << convert;
            EXPECT_EQ(reads<mzComStringC>(row.value, convert), wanted[2]) << "convert " << convert;
            EXPECT_EQ(reads<mzComPtrT<mzIDispatch>>(row.value, convert), wanted[3])
                << "convert " << convert;
        }
    }
}

TEST(ArgumentTypes, AnArgumentThatIsNotThereReadsAsNothing) {
    mzComVariantArrayC const args;
    proxyAutoParaListC list(args);
    EXPECT_EQ(list.size(), 0);
    for (int const index : {-1, 0, 1}) {
        EXPECT_THROW(list[index].get<int>(true), mzAutoTypeCastExceptionC);
        EXPECT_THROW(list[index].get<mzComVariantC>(true), mzAutoTypeCastExceptionC);
    }
}

TEST(ArgumentTypes, AVariantIsHandedOnAsItIs) {
    mzComVariantC const variable = mzComVariantC::createSymbolRef(5);
    EXPECT_TRUE(proxyAutoTypeCastC::argument(variable).get<mzComVariantC>(true).isVariable());
}

}  // namespace
