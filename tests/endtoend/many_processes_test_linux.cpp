// Registration by several processes at once, some of which are killed.

#include <array>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "com/registration/registry_change.h"
#include "registry_table.h"
#include "support/installed_module.h"

namespace {

using namespace velk::test;
using namespace velk::com::test;

/// Registers and unregisters until it is killed, or so often. Ends with the
/// number of the failure: 1, the module does not load; 2, a step failed.
[[noreturn]] void registerInTurns(int rounds) {
    InstalledModule const module;
    if (!module.loaded()) _exit(1);
    for (int i = 0; i < rounds; ++i) {
        if (module.registerServer() != S_OK || module.unregisterServer() != S_OK) _exit(2);
    }
    _exit(0);
}

pid_t startRegistering(int rounds) {
    pid_t const child = fork();
    if (child == 0) registerInTurns(rounds);
    return child;
}

RegistryTable everything() {
    // Nobody changes anything while it is read.
    velk::com::RegistryChange const pause(false);
    return dumpRegistry(HKEY_LOCAL_MACHINE, "Software\\Classes");
}

struct Processes : testing::Test {
    void SetUp() override {
        writeText(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID\\kept", "by someone else");
        ASSERT_EQ(module.registerServer(), S_OK);
        registered = everything();
        ASSERT_EQ(module.unregisterServer(), S_OK);
        unregistered = everything();
    }
    void TearDown() override {
        EXPECT_EQ(module.unregisterServer(), S_OK);
        EXPECT_EQ(everything(), unregistered);
        deleteKey(HKEY_LOCAL_MACHINE, "Software\\Classes\\CLSID");
    }

    InstalledModule const module;
    RegistryTable registered;
    RegistryTable unregistered;
};

TEST_F(Processes, RegisterAtOnceWithoutAFailure) {
    std::array<pid_t, 4> children{};
    for (auto& child : children) child = startRegistering(20);
    for (auto const child : children) {
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }
    EXPECT_EQ(everything(), unregistered);
}

TEST_F(Processes, AreKilledBeforeOrAfterARegistrationButNeverWithin) {
    std::array<pid_t, 4> children{};
    for (auto& child : children) child = startRegistering(1 << 30);
    std::minstd_rand random(20240611);
    char const* const wanted = std::getenv("VELK_REGISTRATION_KILLS");
    int const kills = wanted != nullptr ? std::atoi(wanted) : 100;
    for (int number = 0; number < kills; ++number) {
        usleep(random() % 20000);
        auto& child = children.at(random() % children.size());
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status)) << "a step failed: " << status;
        if (number % 10 == 0) {
            auto const now = everything();
            EXPECT_TRUE(now == registered || now == unregistered);
        }
        child = startRegistering(1 << 30);
    }
    for (auto const child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
}

}  // namespace
