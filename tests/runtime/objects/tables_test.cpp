#include <cmath>

#include <gtest/gtest.h>

#include "script_table.h"

// The script classes and the values, as their tables in tests/data/runtime tell.

namespace velk::test {
namespace {

TEST_F(ScriptTable, Members) {
    check("runtime/members.tsv");
}
TEST_F(ScriptTable, Dictionary) {
    check("runtime/dictionary.tsv");
}
TEST_F(ScriptTable, Array) {
    check("runtime/array.tsv");
}
TEST_F(ScriptTable, ScriptManager) {
    check("runtime/script_manager.tsv");
}
TEST_F(ScriptTable, PathTexts) {
    check("runtime/path_texts.tsv");
}

// In a folder of their own on drive C, which the table calls F:.
TEST_F(ScriptTable, PathFiles) {
    mzComPtrC const root = objectOf("path C:\\");
    mzComPtrT<mzIUnknown> folder;
    ASSERT_EQ(
        call(root.iface(), "createTempDirectoryName", mzCallMethod, {"velk "}).value.get(folder),
        mzSuccess);
    objects_["folder"] = mzComPtrC(folder.iface());
    folder_ = call(folder.iface(), "Name", mzCallPropertyGet).text();
    check("runtime/path_files.tsv");
    // What their failures say differs from run to run and from system to system.
    EXPECT_EQ(call(objects_["nothing"].iface(), "createTempFileName", mzCallMethod, {"a", ""}).code,
              mzFailure);
    for (char const* path : {"path \\\\no-such-server\\share\\x", "path Q:\\x"}) {
        EXPECT_EQ(call(objectOf(path).iface(), "createFile", mzCallMethod).code, mzFailure);
    }
    EXPECT_EQ(call(folder.iface(), "unlinkRecursive", mzCallMethod).integer(), 1);
    EXPECT_EQ(call(folder.iface(), "exists", mzCallPropertyGet).integer(), 0);
}

TEST(Keys, ThatAreEqual) {
    mzComPtrC const one(new Sample), other(new Sample);
    Objects const objects = {{"one", one}, {"other", other}};
    expectTable("runtime/keys.tsv", [&](DataRow const& row) {
        std::string answer;
        for (int const mode : {0, 1}) {
            mzComPtrT<prxDictionaryObjC> const dictionary(new prxDictionaryObjC);
            auto const left = valuesOf(row["left"], objects)[0];
            auto const right = valuesOf(row["right"], objects)[0];
            dictionary->setCompareMode(mode);
            EXPECT_EQ(dictionary->addObj(left, 1), 0);
            int const found = dictionary->searchKey(right);
            EXPECT_EQ(dictionary->addObj(right, 2), found);
            EXPECT_EQ(dictionary->count(), 2 - found);
            if (found) answer = mode == 0 ? "always" : answer.empty() ? "text" : answer;
            EXPECT_TRUE(found || mode == 0 || answer.empty()) << "equal in the stricter mode only";
        }
        return answer.empty() ? "never" : answer;
    });
}

std::string objectOf(mzComVariantC const& value, Objects const& objects) {
    mzComPtrT<mzIUnknown> object;
    return value.getExt(object) == mzSuccess ? described(reference(object.iface()), objects) : "-";
}

/// What one of the reads gives, `-` when the value cannot be read so, which
/// leaves the target as it was.
template <class T>
std::string readOf(mzComVariantC const& value, T const& before, Objects const& objects) {
    auto const asText = [&](T const& read) {
        mzComVariantC shown;
        shown.set(read);
        return described(shown, objects);
    };
    T read = before;
    if (value.getExt(read) == mzSuccess) return asText(read);
    EXPECT_EQ(asText(read), asText(before));
    return "-";
}

template <class T>
bool isA(mzComVariantC const& value) try {
    proxyAutoTypeCastC::argument(value).get<T>(false);
    return true;
} catch (mzAutoTypeCastExceptionC const&) {
    return false;
}

TEST(Conversions, OfValues) {
    mzComPtrC const object(new Sample);
    Objects const objects = {{"object", object}};
    expectTable("runtime/conversions.tsv", [&](DataRow const& row) {
        mzComVariantC const value = valuesOf(row["value"], objects)[0];
        mzComVariantC truth;
        bool isTrue = false;
        if (value.getExt(isTrue) == mzSuccess) truth.set(isTrue);
        std::string const text = readOf(value, mzComStringC("kept"), objects);
        std::string answer = readOf(value, 99, objects) + " | " + readOf(value, 99.5, objects) +
                             " | " + text + " | " +
                             (truth.getType() == mzTypeEmpty ? "-" : described(truth)) + " | " +
                             objectOf(value, objects) + " |";
        if (isA<int>(value)) answer += " integer";
        if (isA<double>(value)) answer += " double";
        if (isA<mzComStringC>(value)) answer += " text";
        if (isA<mzComPtrT<mzIDispatch>>(value)) answer += " object";
        answer += " | " + described(value.getInt()) + " | " + described(value.getDouble());
        double back = 0;
        if (value.getType() == mzTypeDouble && std::isfinite(value.getDouble())) {
            EXPECT_EQ(valuesOf(text, objects)[0].getExt(back), mzSuccess);
            EXPECT_EQ(back, value.getDouble()) << "the text reads back as another number";
        }
        return answer;
    });
}

TEST(Arguments, ThatAreNotThereReadAsNothing) {
    mzComVariantArrayC const args;
    proxyAutoParaListC list(args);
    EXPECT_EQ(list.size(), 0);
    for (int const index : {-1, 0, 1}) {
        EXPECT_THROW(list[index].get<int>(true), mzAutoTypeCastExceptionC);
        EXPECT_THROW(list[index].get<mzComVariantC>(true), mzAutoTypeCastExceptionC);
    }
}

TEST(Texts, AreInOrder) {
    expectTable("runtime/compare.tsv", [](DataRow const& row) {
        mzComStringC const left =
            mzComStringC::fromUtf8(row["left"].data(), int(row["left"].size()));
        mzComStringC const right = mzComStringC::fromUtf8(row["right"].data(), -1);
        int const exact = left.compare(right, caseCompareExact);
        int const folded = left.compare(right, caseCompareAsciiInsensitive);
        if (right.length() == int(row["right"].size())) {
            EXPECT_EQ(left.compare(row["right"].c_str(), caseCompareExact), exact);
            EXPECT_EQ(left.compare(row["right"].c_str(), caseCompareAsciiInsensitive), folded);
        }
        return std::to_string(exact) + " " + std::to_string(folded);
    });
}

TEST(Texts, OfIntegers) {
    expectTable("runtime/from_int.tsv", [](DataRow const& row) {
        return mzComStringC::fromInt(std::stoi(row["value"]), std::stoi(row["base"])).toUtf8();
    });
}

}  // namespace
}  // namespace velk::test
