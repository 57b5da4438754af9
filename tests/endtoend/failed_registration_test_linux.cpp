#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "registry_table.h"
#include "support/installed_module.h"
#include "support/odd_files_linux.h"

namespace {

using namespace velk::test;
using velk::com::test::dumpRegistry;

/// Where the module's type library begins in its file.
std::size_t libraryIn(std::string const& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(stream), {}};
    return bytes.find("MSFT\x02");
}

TEST(FailedRegistration, ChangesNothing) {
    OddFiles const made;
    // The libraries that the copy needs lie beside the original.
    InstalledModule const former;
    auto const path = made.changed(builtModule(), "module.so", libraryIn(builtModule()), "X");
    auto const everything = [] {
        return std::pair(dumpRegistry(HKEY_LOCAL_MACHINE, "Software"),
                         dumpRegistry(HKEY_CURRENT_USER, "Software"));
    };
    for (bool const isRegistered : {false, true}) {
        if (isRegistered) {
            ASSERT_EQ(former.registerServer(), S_OK);
        }
        auto const before = everything();
        InstalledModule const broken(path);
        ASSERT_TRUE(broken.loaded());
        EXPECT_EQ(broken.registerServer(), TYPE_E_CANTLOADLIBRARY);
        EXPECT_EQ(broken.install(true, nullptr), TYPE_E_CANTLOADLIBRARY);
        EXPECT_EQ(broken.unregisterServer(), TYPE_E_CANTLOADLIBRARY);
        EXPECT_EQ(broken.install(true, "user"), TYPE_E_CANTLOADLIBRARY);
        EXPECT_EQ(everything(), before);
    }
    EXPECT_EQ(former.unregisterServer(), S_OK);
}

}  // namespace
