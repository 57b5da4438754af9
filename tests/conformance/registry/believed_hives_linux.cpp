/// Whose hives count: who runs, who owns the file and its folder, who may write
/// to them, and which variable leads there.
#include <fstream>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include "conformance/registry/hive_process.h"

namespace {

using namespace velk::test;
namespace files = std::filesystem;

constexpr uid_t alice = 12001, bob = 12002;
constexpr auto const* seenClass = OLESTR("Velk.Seen");
constexpr auto const* ownPath = OLESTR("Software\\Classes\\Velk.Seen");

/// The text of a value in the machine's and in the user's hive, and what
/// HKEY_CLASSES_ROOT shows of both: 1 for what is there.
Statuses seen() {
    Statuses all;
    for (HKEY const root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
        all.push_back(textAt(root, ownPath, nullptr) == OLESTR("here"));
    }
    all.push_back(textAt(HKEY_CLASSES_ROOT, seenClass, nullptr) == OLESTR("here"));
    return all;
}
Statuses const nothingSeen = {0, 0, 0};

/// A folder with both hives, which any user can reach, and the variables that
/// lead to it.
struct Place {
    HiveFolder base;
    files::path folder = base.path / ".local/share/velkcomadapter";
    files::path machine = folder / "machine.db", user = folder / "user.db";

    Place() {
        files::create_directories(folder);
        inProcess(folder, [] {
            for (HKEY const root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
                setText(created(root, ownPath), nullptr, OLESTR("here"));
            }
            return Statuses{};
        });
        files::permissions(base.path, files::perms(0755));
        files::permissions(base.path / ".local", files::perms(0755));
        files::permissions(base.path / ".local/share", files::perms(0755));
    }
    void become(uid_t fileOwner, mode_t fileMode, uid_t folderOwner, mode_t folderMode) const {
        for (auto const& file : {machine, user}) {
            if (chown(file.c_str(), fileOwner, fileOwner) != 0) std::abort();
            files::permissions(file, files::perms(fileMode));
        }
        if (chown(folder.c_str(), folderOwner, folderOwner) != 0) std::abort();
        files::permissions(folder, files::perms(folderMode));
    }
    std::string value(std::string const& variable) const {
        if (variable == "HOME") return base.path;
        return variable == "XDG_DATA_HOME" ? base.path / ".local/share" : folder;
    }
    std::vector<files::path> everything() const {
        std::vector<files::path> all;
        for (auto const& entry : files::recursive_directory_iterator(base.path)) {
            all.push_back(entry.path());
        }
        return all;
    }
};

using Environment = std::vector<std::pair<std::string, std::string>>;

/// What a process with these variables and none of the other two sees.
Statuses seenWith(Environment const& variables, uid_t user) {
    auto const body = [&] {
        for (auto const* name : {"HOME", "XDG_DATA_HOME", "VELK_REGISTRY_DIR"}) unsetenv(name);
        for (auto const& [name, value] : variables) setenv(name.c_str(), value.c_str(), 1);
        if (user != 0 && setresuid(user, user, user) != 0) _exit(3);
        return seen();
    };
    return inProcess("/nonexistent", body);
}

std::string contentOf(files::path const& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(BelievedHives, AreOfTheUserOrOfRootAndNobodyElsesToWrite) {
    Place const place;
    uid_t const self = getuid();
    std::vector<uid_t> const runners =
        self == 0 ? std::vector<uid_t>{0, alice} : std::vector<uid_t>{self};
    std::vector<uid_t> const owners =
        self == 0 ? std::vector<uid_t>{0, alice, bob} : std::vector<uid_t>{self};
    auto const before = place.everything();
    for (uid_t const runner : runners) {
        for (uid_t const fileOwner : owners) {
            for (uid_t const folderOwner : owners) {
                for (mode_t const fileMode : {0644, 0664, 0646}) {
                    for (mode_t const folderMode : {0755, 0775, 0757}) {
                        place.become(fileOwner, fileMode, folderOwner, folderMode);
                        auto const isOwn = [&](uid_t owner) {
                            return owner == runner || owner == 0;
                        };
                        LSTATUS const counts = isOwn(fileOwner) && isOwn(folderOwner) &&
                                               fileMode == 0644 && folderMode == 0755;
                        for (std::string const variable :
                             {"VELK_REGISTRY_DIR", "XDG_DATA_HOME", "HOME"}) {
                            // Only one of them leads to the machine's hive.
                            LSTATUS const machine = counts && variable == "VELK_REGISTRY_DIR";
                            EXPECT_EQ(seenWith({{variable, place.value(variable)}}, runner),
                                      (Statuses{machine, counts, counts}))
                                << "user " << runner << ", file of " << fileOwner << " with "
                                << std::oct << fileMode << ", folder of " << std::dec << folderOwner
                                << " with " << std::oct << folderMode << ", by " << variable;
                        }
                    }
                }
            }
        }
    }
    EXPECT_EQ(place.everything(), before) << "a read has made something";
    if (self != 0) GTEST_SKIP() << "the rows of other users and owners need root";
}

TEST(BelievedHives, AreRegularFilesAtAbsolutePaths) {
    Place const place;
    EXPECT_EQ(seenWith({{"VELK_REGISTRY_DIR", place.folder}}, 0), (Statuses{1, 1, 1}));
    auto const was = files::current_path();
    files::current_path(place.base.path);
    EXPECT_EQ(seenWith({{"VELK_REGISTRY_DIR", ".local/share/velkcomadapter"}}, 0), nothingSeen);
    EXPECT_EQ(seenWith({{"XDG_DATA_HOME", ".local/share"}, {"HOME", "/nonexistent"}}, 0),
              nothingSeen);
    EXPECT_EQ(seenWith({{"HOME", "."}}, 0), nothingSeen);
    // What is ignored hides nothing that counts.
    EXPECT_EQ(seenWith({{"XDG_DATA_HOME", ".local"}, {"HOME", place.base.path}}, 0),
              (Statuses{0, 1, 1}));
    files::current_path(was);
    for (auto const& file : {place.machine, place.user}) {
        auto const moved = place.base.path / file.filename();
        files::rename(file, moved);
        files::create_symlink(moved, file);
    }
    EXPECT_EQ(seenWith({{"VELK_REGISTRY_DIR", place.folder}}, 0), nothingSeen);
    for (auto const& file : {place.machine, place.user}) {
        files::remove(file);
        ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    }
    EXPECT_EQ(seenWith({{"VELK_REGISTRY_DIR", place.folder}}, 0), nothingSeen);
}

TEST(BelievedHives, TheTraceSaysWhyOneDoesNotCount) {
    Place const place;
    struct Case {
        files::perms file, folder;
        char const* said;
    };
    for (auto const& entry :
         {Case{files::perms(0666), files::perms(0755), "it can be written to"},
          Case{files::perms(0644), files::perms(0777), "its folder can be written to"}}) {
        files::permissions(place.user, entry.file);
        files::permissions(place.folder, entry.folder);
        auto const file = place.base.path / "trace";
        seenWith({{"XDG_DATA_HOME", place.value("XDG_DATA_HOME")},
                  {"VELK_TRACE_LEVEL", "5000"},
                  {"VELK_TRACE_FILE", file}},
                 0);
        std::string const text = contentOf(file);
        EXPECT_NE(text.find(place.user.string() + " does not count: " + entry.said), text.npos)
            << text;
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        files::remove(file);
    }
}

/// With the rights of root for one who has none: set-user-id programs do so.
[[noreturn]] void becomePrivileged(Environment const& variables, char const* test) {
    if (setresuid(alice, 0, 0) != 0) _exit(3);
    for (auto const& [name, value] : variables) setenv(name.c_str(), value.c_str(), 1);
    std::string const filter = std::string("--gtest_filter=") + test;
    execl("/proc/self/exe", "privileged", filter.c_str(), "--gtest_also_run_disabled_tests",
          nullptr);
    _exit(4);
}

// Only ever run by the test that follows.
TEST(PrivilegedProgram, DISABLED_HasTheMachinesHiveOnly) {
    EXPECT_EQ(seen(), (Statuses{1, 0, 1}));
    EXPECT_EQ(textAt(HKEY_LOCAL_MACHINE, ownPath, OLESTR("expanded")), OLESTR("%VELK_PROBE%"));
    Key key;
    EXPECT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, OLESTR("Software\\Mine"), 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, key.target(), nullptr),
              ERROR_ACCESS_DENIED);
}

TEST(BelievedHives, OfAPrivilegedProgramAreTheMachinesWhateverItsCallerSets) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs root";
    Place const place;
    auto const traced = place.base.path / "trace";
    pid_t const child = fork();
    if (child == 0) {
        bool const isAlone = unshare(CLONE_NEWNS) == 0 &&
                             mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                             mount("none", "/var/lib", "tmpfs", 0, nullptr) == 0;
        if (!isAlone) _exit(5);
        inProcess("/var/lib/velkcomadapter", [] {
            Key const key = created(HKEY_LOCAL_MACHINE, ownPath);
            setText(key, nullptr, OLESTR("here"));
            setBytes(key, OLESTR("expanded"), REG_EXPAND_SZ, bytesOf(OLESTR("%VELK_PROBE%")));
            return Statuses{};
        });
        becomePrivileged({{"VELK_REGISTRY_DIR", place.folder},
                          {"XDG_DATA_HOME", place.value("XDG_DATA_HOME")},
                          {"HOME", place.base.path},
                          {"VELK_PROBE", "its caller's"},
                          {"VELK_TRACE_LEVEL", "-1"},
                          {"VELK_TRACE_FILE", traced}},
                         "PrivilegedProgram.*");
    }
    int outcome = 0;
    waitpid(child, &outcome, 0);
    if (WIFEXITED(outcome) && WEXITSTATUS(outcome) == 5) GTEST_SKIP() << "no mount namespace";
    EXPECT_EQ(outcome, 0);
    EXPECT_FALSE(files::exists(traced));
}

TEST(HiveModes, AreTheSameWhateverTheMask) {
    struct Case {
        HKEY root;
        char const* name;
        mode_t file, folder;
    };
    for (auto const& entry : {Case{HKEY_LOCAL_MACHINE, "machine", 0644, 0755},
                              Case{HKEY_CURRENT_USER, "user", 0600, 0700}}) {
        for (mode_t const mask : {0, 022, 027, 077}) {
            HiveFolder const base;
            files::permissions(base.path, files::perms(0711));
            auto const folder = base.path / "deep" / "hives";
            inProcess(folder, [&] {
                umask(mask);
                return Statuses{setText(created(entry.root, ownPath), nullptr, OLESTR("here"))};
            });
            auto const mode = [](files::path const& path) {
                return static_cast<mode_t>(files::status(path).permissions());
            };
            std::string const name = entry.name;
            EXPECT_EQ(mode(folder / (name + ".db")), entry.file) << std::oct << mask;
            EXPECT_EQ(mode(folder / (name + ".db.lock")), 0600u) << std::oct << mask;
            EXPECT_EQ(mode(folder), entry.folder) << std::oct << mask;
            EXPECT_EQ(mode(folder.parent_path()), entry.folder) << std::oct << mask;
            EXPECT_EQ(mode(base.path), 0711u) << "was there before";
            // Neither does a later change touch what is there.
            files::permissions(folder, files::perms(0750));
            inProcess(folder, [&] {
                umask(mask);
                return Statuses{setText(created(entry.root, ownPath), nullptr, OLESTR("new"))};
            });
            EXPECT_EQ(mode(folder / (name + ".db")), entry.file) << std::oct << mask;
            EXPECT_EQ(mode(folder), 0750u);
        }
    }
}

TEST(HiveFolders, OfOthersGetNothingFromRoot) {
    if (getuid() != 0) GTEST_SKIP() << "becoming another user needs root";
    HiveFolder const home;
    ASSERT_EQ(chown(home.path.c_str(), alice, alice), 0);
    auto const body = [&] {
        for (auto const* name : {"XDG_DATA_HOME", "VELK_REGISTRY_DIR"}) unsetenv(name);
        setenv("HOME", home.path.c_str(), 1);
        Key key;
        return Statuses{openStatus(HKEY_CURRENT_USER, ownPath),
                        RegCreateKeyExW(HKEY_CURRENT_USER, ownPath, 0, nullptr, 0, KEY_ALL_ACCESS,
                                        nullptr, key.target(), nullptr)};
    };
    EXPECT_EQ(inProcess("/nonexistent", body),
              (Statuses{ERROR_FILE_NOT_FOUND, ERROR_ACCESS_DENIED}));
    EXPECT_TRUE(files::is_empty(home.path));
}

}  // namespace
