/// Whose hives count: who runs, who owns the file and its folder, who may write
/// to them, and which variable leads there.
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "conformance/registry/registry_process.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

constexpr auto const* machines = "M/Software/Classes/Velk.Seen";

/// What the machine's hive shows, the user's, and both of them as one.
std::string seen(std::function<std::string(std::string const&)> const& answer) {
    return answer(std::string("text ") + machines + " -") + ' ' +
           answer("text U/Software/Classes/Velk.Seen -") + ' ' + answer("text C/Velk.Seen -");
}

void fill(RegistryProcess&& process, std::string const& folder) {
    process.ask("env VELK_REGISTRY_DIR " + folder);
    for (std::string const root : {"M", "U"}) {
        process.ask("make " + root + "/Software/Classes/Velk.Seen");
        process.ask("put " + root + "/Software/Classes/Velk.Seen - here");
    }
}

std::size_t countOf(files::path const& folder) {
    auto const all = files::recursive_directory_iterator(folder);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

TEST(BelievedHives, AreOfTheUserOrOfRootAndNobodyElsesToWrite) {
    RegistryFolder folder;
    std::string const at = "../.local/share/velkcomadapter", base = folder.base();
    fill(RegistryProcess(folder), base + "/.local/share/velkcomadapter");
    for (std::string const above : {"../.local", "../.local/share"}) {
        ASSERT_EQ(folder.answer("chmod " + above + " 755"), "ok");
    }
    std::pair<std::string, std::string> const variables[] = {
        {"VELK_REGISTRY_DIR", base + "/.local/share/velkcomadapter"},
        {"XDG_DATA_HOME", base + "/.local/share"},
        {"HOME", base}};
    uid_t const self = getuid();
    auto const runners = self == 0 ? std::vector<uid_t>{0, alice} : std::vector<uid_t>{self};
    auto const owners = self == 0 ? std::vector<uid_t>{0, alice, bob} : std::vector<uid_t>{self};
    std::string const fileModes[] = {"644", "664", "646"}, folderModes[] = {"755", "775", "757"};
    auto const before = countOf(folder.base());
    auto const become = [&](std::string const& what, uid_t owner, std::string const& mode) {
        folder.answer("chown " + what + ' ' + std::to_string(owner));
        folder.answer("chmod " + what + ' ' + mode);
        return what + " of " + std::to_string(owner) + " with " + mode + ", ";
    };
    auto const expectSeen = [&](uid_t runner, bool counts, std::string const& what) {
        for (auto const& [name, value] : variables) {
            RegistryProcess process(folder, runner);
            for (auto const& [other, ignored] : variables) process.ask("env " + other);
            process.ask("env " + name + ' ' + value);
            // Only one of them leads to the machine's hive.
            std::string const user = counts ? "here" : "missing";
            auto const machine = name == "VELK_REGISTRY_DIR" ? user : "missing";
            EXPECT_EQ(seen([&](auto const& call) { return process.ask(call); }),
                      machine + ' ' + user + ' ' + user)
                << what << "by " << name << " of " << runner;
        }
    };
    for (uid_t const fileOwner : owners) {
        for (uid_t const folderOwner : owners) {
            for (auto const& fileMode : fileModes) {
                for (auto const& folderMode : folderModes) {
                    auto const what = become(at + "/user.db", fileOwner, fileMode) +
                                      become(at + "/machine.db", fileOwner, fileMode) +
                                      become(at, folderOwner, folderMode);
                    for (uid_t const runner : runners) {
                        auto const isOwn = [&](uid_t owner) {
                            return owner == runner || owner == 0;
                        };
                        expectSeen(runner,
                                   isOwn(fileOwner) && isOwn(folderOwner) && fileMode == "644" &&
                                       folderMode == "755",
                                   what);
                    }
                }
            }
        }
    }
    EXPECT_EQ(countOf(folder.base()), before) << "a read has made something";
    if (self != 0) GTEST_SKIP() << "the rows of other users and owners need root";
}

// Only ever run by the test that follows.
TEST(PrivilegedProgram, DISABLED_HasTheMachinesHiveOnly) {
    RegistryCalls calls;
    EXPECT_EQ(seen([&](auto const& call) { return calls.answer(call); }), "here missing here");
    EXPECT_EQ(calls.answer(std::string("text ") + machines + " expanded"), "%HOME%");
    EXPECT_EQ(calls.answer("make U/Software/Mine"), "denied");
}

/// With the rights of root for one who has none, as set-user-id programs have
/// them, in a system whose machine's hive is of this test.
[[noreturn]] void runPrivileged(RegistryFolder& folder) {
    bool const isAlone = unshare(CLONE_NEWNS) == 0 &&
                         mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         mount("none", "/var/lib", "tmpfs", 0, nullptr) == 0;
    if (!isAlone) _exit(5);
    fill(RegistryProcess(folder), "/var/lib/velkcomadapter");
    {
        RegistryProcess process(folder);
        process.ask("env VELK_REGISTRY_DIR /var/lib/velkcomadapter");
        process.ask(std::string("put ") + machines + " expanded 2=250048004f004d00450025000000");
    }
    if (setresuid(alice, 0, 0) != 0) _exit(3);
    setenv("VELK_REGISTRY_DIR", folder.hives().c_str(), 1);
    setenv("HOME", folder.base().c_str(), 1);
    setenv("XDG_DATA_HOME", folder.base().c_str(), 1);
    setenv("VELK_TRACE_LEVEL", "-1", 1);
    setenv("VELK_TRACE_FILE", (folder.base() / "trace").c_str(), 1);
    execl("/proc/self/exe", "privileged", "--gtest_filter=PrivilegedProgram.*",
          "--gtest_also_run_disabled_tests", nullptr);
    _exit(4);
}

TEST(BelievedHives, OfAPrivilegedProgramAreTheMachinesWhateverItsCallerSets) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs root";
    RegistryFolder folder;
    // What the caller's variables would lead to.
    fill(RegistryProcess(folder), folder.hives());
    files::copy(folder.hives(), folder.base() / "velkcomadapter", files::copy_options::recursive);
    pid_t const child = fork();
    if (child == 0) runPrivileged(folder);
    int outcome = 0;
    waitpid(child, &outcome, 0);
    if (WIFEXITED(outcome) && WEXITSTATUS(outcome) == 5) GTEST_SKIP() << "no mount namespace";
    EXPECT_EQ(outcome, 0);
    EXPECT_FALSE(files::exists(folder.base() / "trace"));
}

}  // namespace
