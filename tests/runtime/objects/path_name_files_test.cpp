#include <string>

#include <gtest/gtest.h>

#include "path_names.h"

// The script object "qxttools.pathname": files and folders.

namespace {

using velk::test::call;
using velk::test::get;
using velk::test::method;
using velk::test::newPath;
using velk::test::pathOf;
using velk::test::textAt;
using Path = mzComPtrT<mzIUnknown>;

int is(Path const& path, char const* property) {
    return call(path.iface(), property, get).integer() != 0 ? 1 : 0;
}

int does(Path const& path, char const* name, std::initializer_list<mzComVariantC> args = {}) {
    return call(path.iface(), name, method, args).integer();
}

std::string failure(Path const& path, char const* name,
                    std::initializer_list<mzComVariantC> args = {}, unsigned kind = method) {
    auto const outcome = call(path.iface(), name, kind, args);
    EXPECT_EQ(outcome.code, mzFailure) << name;
    return outcome.exception;
}

/// Works in a folder of its own on drive C.
class PathFiles : public velk::test::PathNames {
  protected:
    void SetUp() override {
        PathNames::SetUp();
        folder_ = pathOf(newPath("C:\\"), "createTempDirectoryName", {"velk "});
        ASSERT_EQ(is(folder_, "isDir"), 1);
    }
    void TearDown() override {
        EXPECT_EQ(does(folder_, "unlinkRecursive"), 1);
        EXPECT_EQ(is(folder_, "exists"), 0);
        folder_ = nullptr;
        PathNames::TearDown();
    }

    Path at(mzComVariantC const& name) { return pathOf(folder_, "plus", {name}); }

    Path folder_;
};

TEST_F(PathFiles, AFileComesAndGoes) {
    Path const file = at(mzComStringC::fromUtf8("b\xC3\xA4r.txt", -1));
    EXPECT_EQ(call(file.iface(), "exists", get).integer(), 0);
    EXPECT_EQ(does(file, "createFile"), 1);
    EXPECT_EQ(call(file.iface(), "exists", get).integer(), 1);
    EXPECT_EQ(does(file, "createFile"), 1) << "a file that is there is no failure";
    for (char const* fact : {"isFile", "isEmptyFile", "isReadable", "isWritable"}) {
        EXPECT_EQ(is(file, fact), 1) << fact;
    }
    for (char const* fact : {"isDir", "isEmptyDir"}) EXPECT_EQ(is(file, fact), 0) << fact;
    EXPECT_EQ(call(file.iface(), "FileSize", get).integer(), 0);
    EXPECT_EQ(does(file, "isHidden"), 0);
    EXPECT_EQ(does(file, "refresh"), 0);
    EXPECT_EQ(does(file, "unlink"), 1);
    EXPECT_EQ(is(file, "exists"), 0);
    EXPECT_NE(failure(file, "unlink"), "");
}

TEST_F(PathFiles, FoldersAreMadeWithThoseAbove) {
    Path const folder = at("a\\b\\c");
    EXPECT_EQ(does(folder, "createDir"), 1);
    EXPECT_EQ(does(folder, "createDir"), 1) << "a folder that is there is no failure";
    for (char const* fact : {"exists", "isDir", "isEmptyDir", "isReadable", "isWritable"}) {
        EXPECT_EQ(is(folder, fact), 1) << fact;
    }
    EXPECT_EQ(is(folder, "isFile"), 0);
    EXPECT_EQ(is(at("a"), "isEmptyDir"), 0);
    EXPECT_EQ(does(folder_, "exists", {"a\\b"}), 1);
    EXPECT_EQ(does(folder_, "exists", {"a\\x"}), 0);
    EXPECT_NE(failure(folder, "FileSize", {}, get).find("is no file"), std::string::npos);
    EXPECT_NE(failure(folder, "createFile"), "");
    EXPECT_NE(failure(at("a"), "unlink"), "") << "a folder with content stays";
}

TEST_F(PathFiles, AFileIsNoFolder) {
    Path const file = at("file");
    EXPECT_EQ(does(file, "createFile"), 1);
    EXPECT_NE(failure(file, "createDir"), "");
    EXPECT_NE(failure(at("file/below"), "createFile"), "");
    EXPECT_NE(failure(file, "unlinkContents"), "");
    EXPECT_NE(failure(at("missing/file"), "createFile"), "");
}

TEST_F(PathFiles, FilesAreRenamed) {
    Path const file = at("old");
    EXPECT_EQ(does(file, "createFile"), 1);
    EXPECT_EQ(does(at("taken"), "createFile"), 1);
    EXPECT_NE(failure(file, "renameTo", {"taken"}).find("exists"), std::string::npos);
    EXPECT_EQ(failure(file, "renameTo", {""}), "The new path has no name");
    EXPECT_EQ(does(file, "renameTo", {"new.txt"}), 1);
    EXPECT_EQ(textAt(file, "Name"), "new.txt");
    EXPECT_EQ(is(file, "exists"), 1);
    EXPECT_EQ(is(at("old"), "exists"), 0);
    EXPECT_EQ(does(at("sub"), "createDir"), 1);
    Path const target = at("sub/moved");
    EXPECT_EQ(does(file, "renameTo", {velk::test::reference(target.iface())}), 1);
    EXPECT_EQ(is(target, "exists"), 1);
    EXPECT_NE(failure(at("nothing"), "renameTo", {"x"}), "");
}

TEST_F(PathFiles, FoldersAreEmptied) {
    EXPECT_EQ(does(at("a/b"), "createDir"), 1);
    EXPECT_EQ(does(at("a/file"), "createFile"), 1);
    EXPECT_EQ(does(at("a/b/file"), "createFile"), 1);
    Path const folder = at("a");
    EXPECT_EQ(does(folder, "unlinkFiles"), 1);
    EXPECT_EQ(is(at("a/file"), "exists"), 0);
    EXPECT_EQ(is(at("a/b/file"), "exists"), 1);
    EXPECT_EQ(does(folder, "unlinkContents"), 1);
    EXPECT_EQ(is(folder, "isEmptyDir"), 1);
    EXPECT_NE(failure(at("nothing"), "unlinkContents"), "");
    EXPECT_NE(failure(at("nothing"), "unlinkRecursive"), "");
}

TEST_F(PathFiles, RootsAreNeverEmptied) {
    for (char const* name : {"unlinkContents", "unlinkFiles", "unlinkRecursive"}) {
        EXPECT_EQ(failure(newPath("C:\\x\\.."), name), "A root is never emptied");
    }
}

TEST_F(PathFiles, WritingIsForbiddenAndPermitted) {
    Path const file = at("file");
    EXPECT_EQ(does(file, "createFile"), 1);
    EXPECT_EQ(does(file, "setWritable", {false}), 1);
    EXPECT_EQ(does(file, "setWritable", {true}), 1);
    EXPECT_EQ(is(file, "isWritable"), 1);
    EXPECT_NE(failure(at("nothing"), "setWritable", {true}), "");
}

TEST_F(PathFiles, TemporariesAreNewEachTime) {
    Path const first = pathOf(folder_, "createTempFileName", {"pre", "txt"});
    Path const second = pathOf(folder_, "createTempFileName", {"pre", ".txt"});
    EXPECT_EQ(is(first, "isEmptyFile"), 1);
    EXPECT_EQ(textAt(first, "Ext"), "txt");
    EXPECT_EQ(textAt(second, "Ext"), "txt");
    EXPECT_EQ(textAt(first, "Name").substr(0, 3), "pre");
    EXPECT_NE(textAt(first, "Name"), textAt(second, "Name"));
    EXPECT_EQ(failure(folder_, "createTempFileName", {"a/b", ""}), "'a/b' cannot be in a name");
    EXPECT_NE(failure(at("nothing"), "createTempFileName", {"a", ""}), "");
    Path const system = pathOf(newPath(""), "createTempDirectoryName", {"velk"});
    EXPECT_EQ(is(system, "isEmptyDir"), 1);
    EXPECT_EQ(does(system, "unlink"), 1);
}

TEST_F(PathFiles, AbsoluteAndCanonicalPaths) {
    EXPECT_EQ(does(at("a/b"), "createDir"), 1);
    Path const around = at("a/../a/./b");
    EXPECT_EQ(textAt(around, "absoluteFilePath"), textAt(at("a/b"), "standard"));
    Path const canonical = newPath(textAt(around, "canonicalFilePath").c_str());
    EXPECT_EQ(does(canonical, "isEqual", {velk::test::reference(at("a/b").iface())}), -1);
    Path const above = newPath(textAt(around, "canonicalPath").c_str());
    EXPECT_EQ(does(above, "isEqual", {velk::test::reference(at("a").iface())}), -1);
    EXPECT_EQ(textAt(at("nothing"), "canonicalFilePath"), "");
    Path const resolved = pathOf(around, "resolved");
    EXPECT_EQ(textAt(resolved, "standard"), textAt(canonical, "standard"));
    EXPECT_EQ(call(around.iface(), "resolve", method).code, mzSuccess);
    EXPECT_EQ(textAt(around, "standard"), textAt(canonical, "standard"));
    EXPECT_EQ(is(newPath(textAt(newPath("x"), "absoluteFilePath").c_str()), "isAbsolute"), 1);
}

TEST_F(PathFiles, PathsThatNameNothing) {
    for (char const* text : {"", "\\\\no-such-server\\share\\x", "Q:\\x"}) {
        SCOPED_TRACE(text);
        Path const path = newPath(text);
        for (char const* fact : {"exists", "isDir", "isFile", "isEmptyDir", "isEmptyFile",
                                 "isReadable", "isWritable"}) {
            EXPECT_EQ(is(path, fact), 0) << fact;
        }
        EXPECT_EQ(does(path, "isHidden"), 0);
        EXPECT_EQ(textAt(path, "canonicalPath"), "");
        EXPECT_NE(failure(path, "createFile"), "");
        EXPECT_NE(failure(path, "FileSize", {}, get), "");
    }
    EXPECT_EQ(failure(newPath(""), "createDir"), "The path is empty");
}

TEST_F(PathFiles, LocalPathsOfShares) {
    EXPECT_EQ(textAt(pathOf(newPath("C:\\a"), "getLocalPathFromUncPath"), "standard"), "C:/a");
    Path const foreign = pathOf(newPath("\\\\no-such-server\\share\\x"), "getLocalPathFromUncPath");
    EXPECT_EQ(is(foreign, "isNull"), 1);
}

}  // namespace
