#include <filesystem>
#include <fstream>

#include "script_table.h"
#include "support/mapped_volume.h"

// Paths on drives and shares that are folders here, and the system's own.

namespace velk::test {
namespace {

namespace fs = std::filesystem;

TEST_F(ScriptTable, PathLinks) {
    mzComPtrT<mzIUnknown> made;
    ASSERT_EQ(call(objectOf("path").iface(), "createTempDirectoryName", mzCallMethod, {"velk"})
                  .value.get(made),
              mzSuccess);
    fs::path const folder = call(made.iface(), "native", mzCallPropertyGet).text();
    MappedVolume const drive(u"M:\\", folder.string());
    MappedVolume const share(u"\\\\server\\share\\", folder.string());
    MappedVolume const other(u"\\\\server\\other\\", "/usr");
    for (char const* name : {"file", ".file", "a\\b", "shut", "shut and open"}) {
        std::ofstream(folder / name) << "12345";
    }
    fs::create_symlink("file", folder / "near");
    fs::create_symlink("/", folder / "far");
    for (char const* name : {"inner", "links"}) {
        fs::create_directory(folder / name);
        fs::create_directory_symlink("..", folder / name / "up");
    }
    objects_["odd"] = objectOf("path " + (folder / "a\\b").string());

    check("runtime/path_links.tsv");

    EXPECT_TRUE(fs::exists(folder / "file")) << "a link was followed";
    EXPECT_FALSE(fs::exists(fs::symlink_status(folder / "inner" / "up")));
    auto const writers = [&](char const* name) {
        return fs::status(folder / name).permissions() & fs::perms(0222);
    };
    EXPECT_EQ(writers("shut"), fs::perms::none);
    EXPECT_EQ(writers("shut and open"), fs::perms::owner_write);
    fs::remove_all(folder);
}

}  // namespace
}  // namespace velk::test
