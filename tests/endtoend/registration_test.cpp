#include <gtest/gtest.h>

#include <filesystem>

#include "registry_table.h"
#include "support/data_table.h"
#include "support/expected_difference.h"
#include "support/installed_module.h"

namespace {

using namespace velk::test;
using namespace velk::com::test;

std::string const classes = "Software\\Classes";
std::string const progId = "VelkCOMAdapter.VelkCOMProxy";
std::string const classKey = "CLSID\\{5A2C7E31-9B84-4F06-8D1E-3C7A9B2E4F18}";
std::string const facade = "Interface\\{E4F16C2A-3B97-4D85-8A0C-7E2B9F1D5C63}";
// A class of somebody else.
std::string const otherClass = "CLSID\\{0D5C5E0A-7E5B-4C0F-9B1E-52F0C0A1B2C3}";
std::vector<std::string> const classKeys{classKey, "AppID\\{6E1F2A90-4C3B-4D7E-A1F2-0B9C8D7E6F51}",
                                         "AppID\\VelkCOMAdapter.DLL", progId, progId + ".1"};
std::vector<std::string> const libraryKeys{"TypeLib\\{71A9C3E5-2F4B-4E8D-B6A1-5D3E8C0F2B94}",
                                           "Interface\\{C3E8A1F2-7D54-4B9A-9E21-6F0B3D8C2A47}",
                                           facade};

/// A hive, and the command line that means it.
struct Hive {
    char const* name;
    HKEY root;
    char const* commandLine;

    HRESULT update(bool install) const {
        InstalledModule const module;
        if (*commandLine) return module.install(install, commandLine);
        return install ? module.registerServer() : module.unregisterServer();
    }
    void remove(std::vector<std::string> const& keys) const {
        for (auto const& key : keys) deleteKey(root, classes + "\\" + key);
    }
};
Hive const machine{"machine", HKEY_LOCAL_MACHINE, ""};
Hive const user{"user", HKEY_CURRENT_USER, "user"};

/// The keys in which modules write beside others.
bool isShared(std::string const& key) {
    return key == "AppID" || key == "CLSID" || key == "TypeLib" || key == "Interface";
}
/// What registering a type library writes is the system's choice.
bool isOfLibrary(std::string const& entry) {
    return entry.starts_with("TypeLib") || entry.starts_with("Typelib") ||
           entry.starts_with("Interface");
}

std::filesystem::path fromUtf8(std::string const& text) {
    return std::u8string(text.begin(), text.end());
}
std::string utf8(std::filesystem::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

void replace(std::string& text, std::string const& from, std::string const& to) {
    if (auto const at = text.find(from); at != text.npos) text.replace(at, from.size(), to);
}

/// The registry may be full of other classes: what counts is how a test
/// changes it. Keys that were there before are known by name only.
class Registration : public testing::Test {
  protected:
    Registration() {
        removeOwnKeys();
        for (auto const& hive : {machine, user})
            before[hive.root] = dumpRegistry(hive.root, classes, &isShared);
    }
    ~Registration() override {
        removeOwnKeys();
        EXPECT_EQ(GetThreadLocale(), locale) << "the thread's locale was changed";
        for (auto const& [root, table] : before) {
            RegistryTable const now = dumpRegistry(root, classes, &isShared);
            for (auto const& [entry, text] : table)
                EXPECT_TRUE(now.contains(entry) || isOfLibrary(entry)) << entry;
        }
    }
    static void removeOwnKeys() {
        for (auto const& hive : {machine, user}) {
            hive.remove(classKeys);
            hive.remove(libraryKeys);
            hive.remove({otherClass});
        }
    }

    /// The entries that came since the test began, of libraries where they are
    /// our own system's. The module's path and its folder stand as words.
    RegistryTable added(Hive const& hive, std::string const& module = builtModule()) const {
        auto const& former = before.at(hive.root);
        auto table = dumpRegistry(hive.root, classes, [&](std::string const& key) {
            return isShared(key) || !former.contains(key);
        });
        bool const isOwn = runsOn(System::ownLayer);
        std::erase_if(table, [&](auto const& entry) {
            return former.contains(entry.first) || (!isOwn && isOfLibrary(entry.first));
        });
        auto const path = std::filesystem::absolute(fromUtf8(module)).make_preferred();
        for (auto& [entry, text] : table) {
            replace(text, utf8(path), "MODULE");
            replace(text, utf8(path.parent_path()), "FOLDER");
        }
        return table;
    }

    LCID const locale = GetThreadLocale();
    std::map<HKEY, RegistryTable> before;
};

TEST_F(Registration, CommandLinesSayForWhom) {
    for (auto const& [commandLine, isUsers] : {std::pair{"user", true},
                                               {"USER", true},
                                               {"uSeR", true},
                                               {nullptr, false},
                                               {"", false},
                                               {"users", false},
                                               {"use", false},
                                               {"user ", false},
                                               {" user", false},
                                               {"us\xc5\xbfr", false}}) {
        InstalledModule const module;
        ASSERT_EQ(module.install(true, commandLine), S_OK);
        EXPECT_EQ(keyExists(HKEY_CURRENT_USER, classes + "\\" + progId), isUsers);
        EXPECT_EQ(keyExists(HKEY_LOCAL_MACHINE, classes + "\\" + progId), !isUsers);
        ASSERT_EQ(module.install(false, commandLine), S_OK);
    }
}

TEST_F(Registration, UserModeStaysOnUntilTheModuleGoes) {
    {
        InstalledModule const module;
        ASSERT_EQ(module.install(false, "user"), module.unregisterServer());
        ASSERT_EQ(module.registerServer(), S_OK);
        EXPECT_FALSE(added(user).empty());
        EXPECT_TRUE(added(machine).empty());
        ASSERT_EQ(module.unregisterServer(), S_OK);
    }
    InstalledModule const again;
    ASSERT_EQ(again.registerServer(), S_OK);
    EXPECT_FALSE(added(machine).empty());
}

/// What stands in a hive before.
struct Former {
    char const* what;
    void (*make)(Hive const& own, Hive const& other);
};
Former const formers[] = {
    {"nothing", [](auto&, auto&) {}},
    {"the same in the other hive", [](auto&, auto& other) { other.update(true); }},
    {"the same", [](auto& own, auto&) { own.update(true); }},
    {"all but the library",
     [](auto& own, auto&) {
         own.update(true);
         own.remove(libraryKeys);
     }},
    {"the library alone",
     [](auto& own, auto&) {
         own.update(true);
         own.remove(classKeys);
     }},
    {"keys of others",
     [](auto& own, auto&) {
         for (auto const& key : {otherClass, progId + "\\Theirs", facade + "\\Theirs"})
             writeText(own.root, classes + "\\" + key, "theirs");
     }},
};

/// What a hive holds, case by case. The keys that modules share may have been
/// there before where the system is not ours, which is why a second text is
/// without them and without libraries.
struct Story {
    std::string all, classesAlone;

    void tell(std::string const& title, RegistryTable table) {
        all += "# " + title + "\n" + textOf(table, "\n") + "\n";
        std::erase_if(table, [](auto const& entry) {
            return isShared(entry.first) || isOfLibrary(entry.first);
        });
        classesAlone += "# " + title + "\n" + textOf(table, "\n") + "\n";
    }
};

TEST_F(Registration, ChangesItsOwnHiveAndNothingElse) {
    Story story;
    for (auto const& [own, other] : {std::pair(machine, user), std::pair(user, machine)}) {
        removeOwnKeys();
        ASSERT_EQ(own.update(true), S_OK);
        auto const hasLibrary = [root = own.root] {
            EXPECT_TRUE(keyExists(root, classes + "\\" + libraryKeys[0] + "\\1.0"));
        };
        *own.commandLine ? expectDifference("user-library", hasLibrary) : hasLibrary();
        RegistryTable const ours = added(own);
        story.tell(std::string(own.name) + ": registered", ours);
        for (auto const& former : formers) {
            for (std::string const what : {"registered, then unregistered", "unregistered"}) {
                auto const title = std::string(own.name) + ": " + former.what + ", then " + what;
                SCOPED_TRACE(title);
                removeOwnKeys();
                former.make(own, other);
                RegistryTable const otherBefore = added(other);
                if (what.starts_with("registered")) {
                    RegistryTable expected = ours;
                    expected.merge(added(own));
                    EXPECT_EQ(own.update(true), S_OK);
                    EXPECT_EQ(added(own), expected);
                }
                EXPECT_EQ(own.update(false), S_OK);
                story.tell(title, added(own));
                EXPECT_EQ(added(other), otherBefore);
            }
        }
    }
    expectApproved("endtoend/registered_classes.txt", story.classesAlone);
    if (runsOn(System::ownLayer)) expectApproved("endtoend/registered.txt", story.all);
}

TEST_F(Registration, MakesTheClassAnew) {
    writeText(HKEY_LOCAL_MACHINE, classes + "\\" + classKey + "\\Stale", "stale");
    ASSERT_EQ(machine.update(true), S_OK);
    EXPECT_FALSE(added(machine).contains(classKey + "\\Stale"));
}

/// A copy of the module below the temporary folder, removed at the end.
class ModuleCopy {
  public:
    explicit ModuleCopy(std::string const& name)
        : folder_(std::filesystem::temp_directory_path() / "velk module copy"),
          path_(folder_ / fromUtf8(name)) {
        std::filesystem::create_directories(path_.parent_path());
        std::filesystem::copy_file(builtModule(), path_,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    ~ModuleCopy() { std::filesystem::remove_all(folder_); }
    std::string path() const { return utf8(path_); }

  private:
    // The libraries that a module needs lie beside the original, which brings
    // them into the process for the copy.
    InstalledModule const original_;
    std::filesystem::path folder_;
    std::filesystem::path path_;
};

TEST_F(Registration, WritesUnusualPathsAsTheyAre) {
    ASSERT_EQ(machine.update(true), S_OK);
    RegistryTable const expected = added(machine);
    for (char const* name :
         {"it's a 'copy'.so", "\xc3\xa4\xe6\x97\xa5\xf0\x9f\x98\x80.so", "%APPID% 100%.so"}) {
        ModuleCopy const copy(name);
        InstalledModule const module(copy.path());
        ASSERT_TRUE(module.loaded()) << name;
        ASSERT_EQ(module.registerServer(), S_OK) << name;
        EXPECT_EQ(added(machine, copy.path()), expected);
        ASSERT_EQ(module.unregisterServer(), S_OK) << name;
    }
}

TEST_F(Registration, RefusesPathsThatDoNotFit) {
    ModuleCopy const copy(std::string(120, 'a') + "/" + std::string(150, 'b') + ".so");
    InstalledModule const module(copy.path());
    ASSERT_TRUE(module.loaded());
    EXPECT_EQ(static_cast<ULONG>(module.install(true, nullptr)), 0x8007007AU);
    EXPECT_EQ(static_cast<ULONG>(module.registerServer()), 0x8007007AU);
    EXPECT_TRUE(added(machine).empty()) << "an entry of a failed step";
}

}  // namespace
