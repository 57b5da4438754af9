#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "path_names.h"

// The script object "qxttools.pathname": the text of paths.

namespace {

using velk::test::call;
using velk::test::get;
using velk::test::method;
using velk::test::newPath;
using velk::test::put;
using velk::test::textAt;

class PathText : public velk::test::PathNames {};

TEST_F(PathText, Parts) {
    struct Row {
        char const* given;
        char const* standard;
        char const* drive;
        char const* computer;
        char const* share;
        char const* folder;
        char const* name;
        char const* extension;
    };
    Row const rows[] = {
        {"", "", "", "", "", "", "", ""},
        {"C:\\a\\b.doc", "C:/a/b.doc", "C", "", "", "C:/a", "b.doc", "doc"},
        {"c:/a\\b/", "c:/a/b", "c", "", "", "c:/a", "b", ""},
        {"C:\\", "C:/", "C", "", "", "C:/", "", ""},
        {"C:", "C:", "C", "", "", "C:", "", ""},
        {"C:a.b", "C:a.b", "C", "", "", "C:", "a.b", "b"},
        {"\\\\server\\share\\x.y.z", "//server/share/x.y.z", "", "server", "share",
         "//server/share", "x.y.z", "z"},
        {"//server/share", "//server/share", "", "server", "share", "//server/share", "", ""},
        {"\\\\server", "//server", "", "server", "", "//server", "", ""},
        {"\\\\?\\C:\\a", "C:/a", "C", "", "", "C:/", "a", ""},
        {"\\\\?\\UNC\\server\\share\\a", "//server/share/a", "", "server", "share",
         "//server/share", "a", ""},
        {"a\\\\b//c", "a/b/c", "", "", "", "a/b", "c", ""},
        {"/usr/lib", "/usr/lib", "", "", "", "/usr", "lib", ""},
        {"///usr", "/usr", "", "", "", "/", "usr", ""},
        {".profile", ".profile", "", "", "", "", ".profile", ""},
        {"a/..", "a/..", "", "", "", "a", "..", ""},
        {"point.", "point.", "", "", "", "", "point.", ""},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(row.given);
        auto const path = newPath(row.given);
        EXPECT_EQ(textAt(path, "standard"), row.standard);
        EXPECT_EQ(textAt(path, "Drive"), row.drive);
        EXPECT_EQ(textAt(path, "ComputerName"), row.computer);
        EXPECT_EQ(textAt(path, "ShareName"), row.share);
        EXPECT_EQ(textAt(path, "Path"), row.folder);
        EXPECT_EQ(textAt(path, "Name"), row.name);
        EXPECT_EQ(textAt(path, "Ext"), row.extension);
        EXPECT_EQ(textAt(newPath(row.standard), "standard"), row.standard);
    }
}

// What a path is: d drive, c computer, s share; in capitals when it is that
// alone; e extension, a absolute, n null.
std::string facts(mzComPtrT<mzIUnknown> const& path) {
    struct Fact {
        char const* member;
        char letter;
    };
    std::string letters;
    for (Fact const& fact :
         {Fact{"hasDrive", 'd'}, Fact{"isDrive", 'D'}, Fact{"hasComputerName", 'c'},
          Fact{"isComputerName", 'C'}, Fact{"hasShareName", 's'}, Fact{"isShareName", 'S'},
          Fact{"hasExt", 'e'}, Fact{"isAbsolute", 'a'}, Fact{"isNull", 'n'}}) {
        if (call(path.iface(), fact.member, get).integer() != 0) letters += fact.letter;
    }
    return letters;
}

TEST_F(PathText, Facts) {
    EXPECT_EQ(facts(newPath("")), "n");
    EXPECT_EQ(facts(newPath("C:")), "dD");
    EXPECT_EQ(facts(newPath("C:\\")), "dDa");
    EXPECT_EQ(facts(newPath("C:\\a.b")), "dea");
    EXPECT_EQ(facts(newPath("C:a")), "d");
    EXPECT_EQ(facts(newPath("\\\\server")), "cCa");
    EXPECT_EQ(facts(newPath("\\\\server\\share")), "csSa");
    EXPECT_EQ(facts(newPath("\\\\server\\share\\a.b")), "csea");
    EXPECT_EQ(facts(newPath("a\\b")), "");
}

TEST_F(PathText, NativeTextHasBackslashesWhereADriveOrAComputerIs) {
    EXPECT_EQ(textAt(newPath("C:/a/b"), "native"), "C:\\a\\b");
    EXPECT_EQ(textAt(newPath("C:/"), "native"), "C:\\");
    EXPECT_EQ(textAt(newPath("//server/share/a"), "native"), "\\\\server\\share\\a");
}

TEST_F(PathText, Writes) {
    struct Row {
        char const* given;
        char const* member;
        char const* value;
        char const* result;  // the exception after "!"
    };
    Row const rows[] = {
        {"a", "native", "C:\\b", "C:/b"},
        {"C:\\a", "native", "", ""},
        {"C:\\a", "Drive", "D", "D:/a"},
        {"C:\\a", "Drive", "d:", "d:/a"},
        {"C:\\a", "Drive", "", "/a"},
        {"a", "Drive", "D", "D:a"},
        {"\\\\server\\share\\a", "Drive", "D", "D:/a"},
        {"C:\\a", "Drive", "DE", "!A drive is a single letter"},
        {"C:\\a", "Drive", "1", "!A drive is a single letter"},
        {"C:\\a.doc", "Ext", "txt", "C:/a.txt"},
        {"C:\\a.doc", "Ext", ".txt", "C:/a.txt"},
        {"C:\\a.b.doc", "Ext", "", "C:/a.b"},
        {"a", "Ext", "x", "a.x"},
        {".a", "Ext", "x", ".a.x"},
        {"C:\\", "Ext", "x", "!The path has no name"},
        {"a", "Ext", "x/y", "!An extension is part of a single name"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string(row.given) + " " + row.member + " " + row.value);
        auto const path = newPath(row.given);
        auto const outcome = call(path.iface(), row.member, put, {row.value});
        bool const fails = row.result[0] == '!';
        EXPECT_EQ(outcome.code, fails ? mzFailure : mzSuccess);
        EXPECT_EQ(fails ? "!" + outcome.exception : textAt(path, "standard"), row.result);
    }
}

TEST_F(PathText, Composition) {
    struct Row {
        char const* left;
        char const* member;
        char const* right;
        char const* result;  // the exception after "!"
    };
    Row const rows[] = {
        {"", "plus", "C:\\a", "C:/a"},
        {"C:\\a", "plus", "b\\c.d", "C:/a/b/c.d"},
        {"C:\\a", "plus", "", "C:/a"},
        {"C:\\a", "plus", "D:\\b", "D:/b"},
        {"C:\\a", "plus", "D:b", "D:b"},
        {"C:\\a", "plus", "c:b", "C:/a/b"},
        {"C:", "plus", "a", "C:a"},
        {"C:\\a", "plus", "\\\\server\\share\\b", "//server/share/b"},
        {"\\\\server\\share", "plus", "a", "//server/share/a"},
        {"a", "plus", "..\\b", "a/../b"},
        {"C:\\a\\b\\c", "minus", "c:\\A", "b/c"},
        {"C:\\a\\.\\b", "minus", "C:\\x\\..\\a", "b"},
        {"C:\\a", "minus", "C:\\a", ""},
        {"C:\\ab", "minus", "C:\\a", "!'C:/ab' does not begin with 'C:/a'"},
        {"C:\\a", "minus", "D:\\a", "!'C:/a' does not begin with 'D:/a'"},
        {"a/b", "minus", "a", "b"},
    };
    for (Row const& row : rows) {
        SCOPED_TRACE(std::string(row.left) + " " + row.member + " " + row.right);
        auto const path = newPath(row.left);
        auto const outcome = call(path.iface(), row.member, method, {row.right});
        mzComPtrT<mzIUnknown> result;
        outcome.value.get(result);
        bool const fails = row.result[0] == '!';
        EXPECT_EQ(outcome.code, fails ? mzFailure : mzSuccess);
        EXPECT_EQ(fails ? "!" + outcome.exception : textAt(result, "standard"), row.result);
        // The path itself stays as it was.
        EXPECT_EQ(textAt(path, "standard"), textAt(newPath(row.left), "standard"));
    }
}

TEST_F(PathText, OptimizedPathsGoStraight) {
    struct Row {
        char const* given;
        char const* result;
    };
    for (Row const& row :
         {Row{"C:\\a\\..\\b\\.\\c", "C:/b/c"}, Row{"C:\\..\\a", "C:/a"}, Row{"a\\..", "."},
          Row{"..\\a\\..\\..", "../.."}, Row{"", ""}, Row{"C:a\\..", "C:"},
          Row{"\\\\server\\share\\..\\..\\a", "//server/share/a"}}) {
        SCOPED_TRACE(row.given);
        auto const path = newPath(row.given);
        EXPECT_EQ(call(path.iface(), "optimize", method).code, mzSuccess);
        EXPECT_EQ(textAt(path, "standard"), row.result);
    }
}

TEST_F(PathText, Comparisons) {
    struct Row {
        char const* left;
        char const* right;
        bool equal;
        bool below;
    };
    for (Row const& row :
         {Row{"C:\\a", "c:/A", true, false}, Row{"C:\\a\\b", "C:\\A", false, true},
          Row{"C:\\a", "C:\\a\\b", false, false}, Row{"C:\\ab", "C:\\a", false, false},
          Row{"C:\\a\\..\\b", "C:\\b", true, false}, Row{"C:\\a", "D:\\", false, false},
          Row{"C:\\a", "C:\\", false, true}, Row{"a", "a/b/..", true, false},
          Row{"\\\\Server\\share\\x", "\\\\server\\SHARE", false, true}}) {
        SCOPED_TRACE(std::string(row.left) + " " + row.right);
        auto const path = newPath(row.left);
        EXPECT_EQ(call(path.iface(), "isEqual", method, {row.right}).integer(), -row.equal);
        EXPECT_EQ(call(path.iface(), "isSubDirOf", method, {row.right}).integer(), -row.below);
    }
}

TEST_F(PathText, TakesPathsAndTextsAndNothingElse) {
    auto const path = newPath("C:\\a");
    auto const other = newPath("b");
    mzComPtrC list;
    ASSERT_EQ(mzComCreateObject("qxttools.array", mzIDispatch::interfaceId(), list), mzSuccess);
    struct Row {
        mzComVariantC argument;
        char const* result;  // the exception after "!"
    };
    mzComStringC const zero(QString("a") + QChar('\0') + "b");
    for (Row const& row :
         {Row{velk::test::reference(other.iface()), "C:/a/b"},
          Row{mzComVariantC::createSymbolRef("c"), "C:/a/b/c"}, Row{2024, "C:/a/b/c/2024"},
          Row{mzComVariantC(), "!The value is no path"},
          Row{velk::test::reference(nullptr), "!The object is no path"},
          Row{velk::test::reference(list.iface()), "!The object is no path"},
          Row{zero, "!A path cannot contain the character 0"}}) {
        auto const outcome = call(path.iface(), "append", method, {row.argument});
        bool const fails = row.result[0] == '!';
        EXPECT_EQ(outcome.code, fails ? mzFailure : mzSuccess);
        EXPECT_EQ(fails ? "!" + outcome.exception : textAt(path, "standard"), row.result);
    }
}

}  // namespace
