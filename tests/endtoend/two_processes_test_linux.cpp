// Registration by several processes at once.

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include "support/installed_module.h"
#include "support/registry_dump.h"

namespace {

using namespace velk::test;

constexpr int rounds = 200;

/// Registers and unregisters again and again, in a process of its own. What
/// the others do at the same time may fail single steps. Ends with the number
/// of the failure that must not happen: 1, the module does not load; 2, no
/// step at all succeeded.
[[noreturn]] void registerInTurns() {
    InstalledModule const module;
    if (!module.loaded()) _exit(1);
    int succeeded = 0;
    for (int i = 0; i < rounds; ++i) {
        if (SUCCEEDED(module.registerServer())) ++succeeded;
        if (SUCCEEDED(module.unregisterServer())) ++succeeded;
    }
    _exit(succeeded > 0 ? 0 : 2);
}

RegistryTable everything() {
    return dumpRegistry(HKEY_LOCAL_MACHINE, "Software\\Classes",
                        [](std::string const&) { return true; });
}

TEST(TwoProcesses, LeaveTheRegistryWhole) {
    // Made before the others start, so that all see the same beginning.
    writeText(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID", "kept", "by someone else");
    pid_t children[2];
    for (auto& child : children) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) registerInTurns();
    }
    for (auto const child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_EQ(WEXITSTATUS(status), 0);
    }
    InstalledModule const module;
    ASSERT_TRUE(module.loaded());
    ASSERT_EQ(module.registerServer(), S_OK);
    RegistryTable const first = everything();
    ASSERT_EQ(module.unregisterServer(), S_OK);
    ASSERT_EQ(module.registerServer(), S_OK);
    EXPECT_EQ(everything(), first);
    EXPECT_EQ(first.at("VelkCOMAdapter.VelkCOMProxy\\CurVer:"), "VelkCOMAdapter.VelkCOMProxy.1");
    ASSERT_EQ(module.unregisterServer(), S_OK);
    RegistryTable const left = everything();
    EXPECT_EQ(left.at("CLSID:kept"), "by someone else");
    for (auto const& [key, value] : left) {
        EXPECT_EQ(key.find("Velk"), std::string::npos) << key;
    }
    deleteKey(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID");
}

}  // namespace
