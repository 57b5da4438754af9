#include <gtest/gtest.h>

#include <filesystem>

#include <windows.h>

#include <oleauto.h>

#include "support/expected_difference.h"
#include "support/installed_module.h"
#include "support/registry_dump.h"

namespace {

using namespace velk::test;

std::string const classes = "Software\\Classes";
std::string const classId = "{5A2C7E31-9B84-4F06-8D1E-3C7A9B2E4F18}";
std::string const libraryId = "{71A9C3E5-2F4B-4E8D-B6A1-5D3E8C0F2B94}";
std::string const applicationId = "{6E1F2A90-4C3B-4D7E-A1F2-0B9C8D7E6F51}";
// A class of somebody else.
std::string const otherClassId = "{0D5C5E0A-7E5B-4C0F-9B1E-52F0C0A1B2C3}";
std::string const proxyId = "{C3E8A1F2-7D54-4B9A-9E21-6F0B3D8C2A47}";
std::string const facadeId = "{E4F16C2A-3B97-4D85-8A0C-7E2B9F1D5C63}";
std::string const progId = "VelkCOMAdapter.VelkCOMProxy";

std::filesystem::path fromUtf8(std::string const& text) {
    return std::u8string(text.begin(), text.end());
}

std::string utf8(std::filesystem::path const& path) {
    std::u8string const text = path.u8string();
    return {text.begin(), text.end()};
}

/// The full path as the system tells it of a loaded module.
std::string nativePath(std::string const& path) {
    return utf8(std::filesystem::absolute(fromUtf8(path)).make_preferred());
}

/// Everything that the registry scripts write for a module at `path`.
RegistryTable expectedEntries(std::string const& path) {
    std::string const key = "CLSID\\" + classId;
    return {
        {"AppID", ""},
        {"AppID\\" + applicationId, ""},
        {"AppID\\" + applicationId + ":", "VelkCOMAdapter"},
        {"AppID\\VelkCOMAdapter.DLL", ""},
        {"AppID\\VelkCOMAdapter.DLL:AppID", applicationId},
        {progId + ".1", ""},
        {progId + ".1:", "VelkCOMProxy Class"},
        {progId + ".1\\CLSID", ""},
        {progId + ".1\\CLSID:", classId},
        {progId, ""},
        {progId + ":", "VelkCOMProxy Class"},
        {progId + "\\CLSID", ""},
        {progId + "\\CLSID:", classId},
        {progId + "\\CurVer", ""},
        {progId + "\\CurVer:", progId + ".1"},
        {"CLSID", ""},
        {key, ""},
        {key + ":", "VelkCOMProxy Class"},
        {key + "\\ProgID", ""},
        {key + "\\ProgID:", progId + ".1"},
        {key + "\\VersionIndependentProgID", ""},
        {key + "\\VersionIndependentProgID:", progId},
        {key + "\\Programmable", ""},
        {key + "\\InprocServer32", ""},
        {key + "\\InprocServer32:", path},
        {key + "\\InprocServer32:ThreadingModel", "Apartment"},
        {key + "\\TypeLib", ""},
        {key + "\\TypeLib:", libraryId},
    };
}

/// What registering the type library writes is the system's choice.
bool belongsToTypeLibrary(std::string const& entry) {
    return entry.starts_with("TypeLib") || entry.starts_with("Typelib") ||
           entry.starts_with("Interface");
}

/// A hive, and the command line that means it.
struct Hive {
    char const* name;
    HKEY root;
    bool isUsers;

    HRESULT update(bool install) const {
        InstalledModule const module;
        if (isUsers) return module.install(install, "user");
        return install ? module.registerServer() : module.unregisterServer();
    }
};
Hive const machine{"machine", HKEY_LOCAL_MACHINE, false};
Hive const user{"user", HKEY_CURRENT_USER, true};

/// The keys in which the scripts write beside others.
bool isShared(std::string const& key) {
    return key == "AppID" || key == "CLSID" || key == "TypeLib" || key == "Interface";
}

bool typeLibraryIsRegistered(HKEY root) {
    return keyExists(root, classes + "\\TypeLib\\" + libraryId + "\\1.0");
}

RegistryTable const keptKeys = {{"AppID", ""}, {"CLSID", ""}};

/// The registry may be full of other classes: what counts is how a test
/// changes it. Keys that were there before are known by name only.
class Registration : public testing::Test {
  protected:
    void SetUp() override { removeOwnKeys(); }
    void TearDown() override {
        removeOwnKeys();
        EXPECT_EQ(GetThreadLocale(), locale) << "the thread's locale was changed";
        for (HKEY const root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            RegistryTable const now = dumpRegistry(root, classes, &isShared);
            for (auto const& [entry, text] : before.at(root)) {
                EXPECT_TRUE(now.contains(entry) || belongsToTypeLibrary(entry)) << entry;
            }
        }
    }

    static void removeOwnKeys() {
        for (HKEY const root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
            for (std::string const& key :
                 {"CLSID\\" + classId, "CLSID\\" + otherClassId, "AppID\\" + applicationId,
                  std::string("AppID\\VelkCOMAdapter.DLL"), progId, progId + ".1",
                  "TypeLib\\" + libraryId, "Interface\\" + proxyId, "Interface\\" + facadeId}) {
                deleteKey(root, classes + "\\" + key);
            }
        }
    }

    /// The entries that came since the test began, without those of libraries.
    RegistryTable added(HKEY root) const {
        RegistryTable table = addedWithLibraries(root);
        std::erase_if(table, [](auto const& entry) { return belongsToTypeLibrary(entry.first); });
        return table;
    }
    RegistryTable addedWithLibraries(HKEY root) const {
        RegistryTable table = dumpRegistry(root, classes, [&](std::string const& key) {
            return isShared(key) || !before.at(root).contains(key);
        });
        std::erase_if(table,
                      [&](auto const& entry) { return before.at(root).contains(entry.first); });
        return table;
    }
    /// What registering may have changed, of libraries where that is our own.
    RegistryTable changed(Hive const& hive) const {
        bool const isOwn = runningSystem() == System::ownLayer;
        RegistryTable table = isOwn ? addedWithLibraries(hive.root) : added(hive.root);
        for (auto const* key : {"TypeLib", "Interface"}) table.erase(key);
        return table;
    }
    /// Those of `entries` that were not there when the test began.
    RegistryTable fresh(HKEY root, RegistryTable entries) const {
        std::erase_if(entries,
                      [&](auto const& entry) { return before.at(root).contains(entry.first); });
        return entries;
    }

    LCID const locale = GetThreadLocale();
    std::map<HKEY, RegistryTable> const before = [] {
        removeOwnKeys();
        return std::map<HKEY, RegistryTable>{
            {HKEY_LOCAL_MACHINE, dumpRegistry(HKEY_LOCAL_MACHINE, classes, &isShared)},
            {HKEY_CURRENT_USER, dumpRegistry(HKEY_CURRENT_USER, classes, &isShared)}};
    }();
};

TEST_F(Registration, CommandLinesSayForWhom) {
    struct Case {
        char const* commandLine;
        bool isUsers;
    };
    Case const cases[] = {{"user", true},   {"USER", true},        {"uSeR", true}, {nullptr, false},
                          {"", false},      {"users", false},      {"use", false}, {"user ", false},
                          {" user", false}, {"us\xc5\xbfr", false}};
    for (auto const& entry : cases) {
        InstalledModule const module;
        ASSERT_EQ(module.install(true, entry.commandLine), S_OK);
        EXPECT_EQ(keyExists(HKEY_CURRENT_USER, classes + "\\" + progId), entry.isUsers);
        EXPECT_EQ(keyExists(HKEY_LOCAL_MACHINE, classes + "\\" + progId), !entry.isUsers);
        ASSERT_EQ(module.install(false, entry.commandLine), S_OK);
    }
}

TEST_F(Registration, UserModeStaysOnUntilTheModuleGoes) {
    {
        InstalledModule const module;
        ASSERT_EQ(module.install(false, "user"), module.unregisterServer());
        ASSERT_EQ(module.registerServer(), S_OK);
        EXPECT_FALSE(added(HKEY_CURRENT_USER).empty());
        EXPECT_TRUE(added(HKEY_LOCAL_MACHINE).empty());
        ASSERT_EQ(module.unregisterServer(), S_OK);
    }
    InstalledModule const again;
    ASSERT_EQ(again.registerServer(), S_OK);
    EXPECT_FALSE(added(HKEY_LOCAL_MACHINE).empty());
}

/// What stands in a hive before, and which of it has our names and stays
/// when the module is unregistered.
struct Former {
    char const* what;
    std::function<void(Hive const& own, Hive const& other)> make;
    RegistryTable stays = {};
};

void removeKeys(Hive const& hive, std::initializer_list<std::string> keys) {
    for (auto const& key : keys) deleteKey(hive.root, classes + "\\" + key);
}

Former const formers[] = {
    {"nothing", [](auto&, auto&) {}},
    {"the same in the other hive", [](auto&, auto& other) { other.update(true); }},
    {"the same", [](auto& own, auto&) { own.update(true); }},
    {"all but the library",
     [](auto& own, auto&) {
         own.update(true);
         removeKeys(own,
                    {"TypeLib\\" + libraryId, "Interface\\" + proxyId, "Interface\\" + facadeId});
     }},
    {"the library alone",
     [](auto& own, auto&) {
         own.update(true);
         removeKeys(own, {"CLSID\\" + classId, "AppID\\" + applicationId,
                          "AppID\\VelkCOMAdapter.DLL", progId, progId + ".1"});
     }},
    {"keys of others",
     [](auto& own, auto&) {
         for (auto const& key : {"CLSID\\" + otherClassId, progId + "\\Theirs",
                                 "Interface\\" + facadeId + "\\Theirs"}) {
             writeText(own.root, classes + "\\" + key, "", "theirs");
         }
     },
     {{progId + ":", "VelkCOMProxy Class"}}},
};

/// Entries of a hive by what registering writes there.
RegistryTable without(RegistryTable table, RegistryTable const& ours) {
    std::erase_if(table, [&](auto const& entry) {
        return ours.contains(entry.first) && !isShared(entry.first);
    });
    return table;
}
RegistryTable with(RegistryTable table, RegistryTable const& more) {
    for (auto const& entry : more) table.insert_or_assign(entry.first, entry.second);
    return table;
}

TEST_F(Registration, ChangesItsOwnHiveAndNothingElse) {
    for (auto const& [own, other] : {std::pair(machine, user), std::pair(user, machine)}) {
        removeOwnKeys();
        ASSERT_EQ(own.update(true), S_OK);
        EXPECT_EQ(added(own.root), fresh(own.root, expectedEntries(nativePath(builtModule()))));
        auto const hasLibrary = [root = own.root] { EXPECT_TRUE(typeLibraryIsRegistered(root)); };
        if (own.isUsers) {
            expectDifference(System::wine, "writes a user's type library for the machine",
                             hasLibrary);
        } else {
            hasLibrary();
        }
        RegistryTable const ours = changed(own);
        for (auto const& former : formers) {
            for (bool const registers : {true, false}) {
                SCOPED_TRACE(std::string(own.name) + ", " + former.what +
                             (registers ? ", then registered" : ""));
                removeOwnKeys();
                former.make(own, other);
                RegistryTable const ownBefore = changed(own);
                RegistryTable const otherBefore = changed(other);
                if (registers) {
                    EXPECT_EQ(own.update(true), S_OK);
                    EXPECT_EQ(changed(own), with(ownBefore, ours));
                }
                EXPECT_EQ(own.update(false), S_OK);
                RegistryTable left = with(without(ownBefore, ours), fresh(own.root, keptKeys));
                // The keys above those of others.
                for (auto const& key : {progId, "Interface\\" + facadeId}) {
                    if (ownBefore.contains(key + "\\Theirs")) left[key] = "";
                }
                if (registers) left = with(left, former.stays);
                EXPECT_EQ(changed(own), left);
                EXPECT_EQ(changed(other), otherBefore);
            }
        }
    }
}

TEST_F(Registration, MakesTheClassAnew) {
    writeText(HKEY_LOCAL_MACHINE, classes + "\\CLSID\\" + classId + "\\Stale", "", "stale");
    ASSERT_EQ(machine.update(true), S_OK);
    EXPECT_FALSE(added(HKEY_LOCAL_MACHINE).contains("CLSID\\" + classId + "\\Stale"));
}

/// A copy of the module below the temporary folder, removed at the end.
class ModuleCopy {
  public:
    explicit ModuleCopy(std::string const& name)
        : folder_(std::filesystem::temp_directory_path() / "velk module copy") {
        std::filesystem::create_directories(folder_);
        path_ = folder_ / fromUtf8(name);
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
    for (char const* name :
         {"it's a 'copy'.so", "\xc3\xa4\xe6\x97\xa5\xf0\x9f\x98\x80.so", "%APPID% 100%.so"}) {
        ModuleCopy const copy(name);
        InstalledModule const module(copy.path());
        ASSERT_TRUE(module.loaded()) << name;
        ASSERT_EQ(module.registerServer(), S_OK) << name;
        EXPECT_EQ(added(HKEY_LOCAL_MACHINE),
                  fresh(HKEY_LOCAL_MACHINE, expectedEntries(nativePath(copy.path()))));
        ASSERT_EQ(module.unregisterServer(), S_OK) << name;
    }
}

TEST_F(Registration, RefusesPathsThatDoNotFit) {
    ModuleCopy const copy(std::string(120, 'a') + "/" + std::string(150, 'b') + ".so");
    InstalledModule const module(copy.path());
    ASSERT_TRUE(module.loaded());
    EXPECT_EQ(static_cast<ULONG>(module.install(true, nullptr)), 0x8007007AU);
    EXPECT_EQ(static_cast<ULONG>(module.registerServer()), 0x8007007AU);
    EXPECT_TRUE(added(HKEY_LOCAL_MACHINE).empty()) << "an entry of a failed step";
}

}  // namespace
