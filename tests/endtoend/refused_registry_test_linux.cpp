#include <gtest/gtest.h>
#include <stdlib.h>

#include "support/installed_module.h"

namespace {

using namespace velk::test;

/// Installs into a registry that nobody can write to.
[[noreturn]] void installWhereNothingCanBeWritten() {
    setenv("VELK_REGISTRY_DIR", "/dev/null/registry", 1);
    LCID const locale = GetThreadLocale();
    bool right = false;
    {
        InstalledModule const module;
        right = module.loaded() && FAILED(module.install(true, nullptr)) &&
                FAILED(module.install(true, "user")) && FAILED(module.registerServer()) &&
                GetThreadLocale() == locale;
    }
    exit(right ? 0 : 1);
}

TEST(RefusedRegistry, FailsEveryInstallation) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(installWhereNothingCanBeWritten(), testing::ExitedWithCode(0), "");
}

}  // namespace
