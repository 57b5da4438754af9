/// The merged view of the user's and the machine's classes, which not every
/// other system of this interface has.
#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;

constexpr auto const* classes = OLESTR("Software\\Classes\\");

Text classPath(Text const& name) {
    return classes + name;
}

void set(HKEY hive, Text const& name, OLECHAR const* value, Text const& text) {
    setText(created(hive, classPath(name)), value, text);
}

bool has(HKEY hive, Text const& name) {
    return openStatus(hive, classPath(name).c_str()) == ERROR_SUCCESS;
}

struct MergedClasses : testing::Test {
    MergedClasses() { clean(); }
    ~MergedClasses() override { clean(); }

    void clean() {
        for (HKEY const hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
            for (auto const* name : {OLESTR("Velk.Both"), OLESTR("Velk.User"),
                                     OLESTR("Velk.Machine"), OLESTR("Velk.New")}) {
                RegDeleteTreeW(hive, classPath(name).c_str());
            }
        }
    }
    Key merged(OLECHAR const* name) {
        Key key;
        EXPECT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, name, 0, KEY_ALL_ACCESS, key.target()),
                  ERROR_SUCCESS);
        return key;
    }
    void fillBoth() {
        set(HKEY_CURRENT_USER, OLESTR("Velk.Both"), nullptr, OLESTR("user"));
        set(HKEY_LOCAL_MACHINE, OLESTR("Velk.Both"), nullptr, OLESTR("machine"));
        set(HKEY_LOCAL_MACHINE, OLESTR("Velk.Both"), OLESTR("m"), OLESTR("machine"));
        created(HKEY_CURRENT_USER, classPath(OLESTR("Velk.Both\\uSub")));
        created(HKEY_CURRENT_USER, classPath(OLESTR("Velk.Both\\SAME")));
        created(HKEY_LOCAL_MACHINE, classPath(OLESTR("Velk.Both\\mSub")));
        created(HKEY_LOCAL_MACHINE, classPath(OLESTR("Velk.Both\\same")));
    }
};

TEST_F(MergedClasses, TheUsersShowsOverTheMachines) {
    fillBoth();
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, OLESTR("Velk.Both"), nullptr), OLESTR("user"));
    EXPECT_EQ(textAt(HKEY_CLASSES_ROOT, OLESTR("velk.both"), OLESTR("m")), OLESTR("machine"));
    Key const key = merged(OLESTR("Velk.Both"));
    EXPECT_EQ(keyNames(key), (std::vector<Text>{OLESTR("mSub"), OLESTR("SAME"), OLESTR("uSub")}));
    EXPECT_EQ(valueNames(key), (std::vector<Text>{OLESTR(""), OLESTR("m")}));
    EXPECT_EQ(openStatus(key, OLESTR("mSub")), ERROR_SUCCESS);
    DWORD keys = 0, values = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values, nullptr,
                     nullptr, nullptr, nullptr);
    EXPECT_EQ(keys, 3u);
    EXPECT_EQ(values, 2u);
}

TEST_F(MergedClasses, AHandleSeesWhatTheUserAddsLater) {
    set(HKEY_LOCAL_MACHINE, OLESTR("Velk.Machine"), nullptr, OLESTR("machine"));
    Key const key = merged(OLESTR("Velk.Machine"));
    EXPECT_EQ(textAt(key, nullptr, nullptr), OLESTR("machine"));
    set(HKEY_CURRENT_USER, OLESTR("Velk.Machine"), nullptr, OLESTR("user"));
    EXPECT_EQ(textAt(key, nullptr, nullptr), OLESTR("user"));
}

TEST_F(MergedClasses, NewKeysAreTheMachinesUnlessTheirParentIsTheUsersAlone) {
    fillBoth();
    set(HKEY_CURRENT_USER, OLESTR("Velk.User"), nullptr, OLESTR("user"));
    created(HKEY_CLASSES_ROOT, OLESTR("Velk.New\\a"));
    created(HKEY_CLASSES_ROOT, OLESTR("Velk.Both\\new"));
    created(HKEY_CLASSES_ROOT, OLESTR("Velk.User\\new"));
    created(merged(OLESTR("Velk.User")), OLESTR("more"));
    struct Case {
        OLECHAR const* name;
        bool user;
    };
    for (auto const& entry :
         {Case{OLESTR("Velk.New\\a"), false}, Case{OLESTR("Velk.Both\\new"), false},
          Case{OLESTR("Velk.User\\new"), true}, Case{OLESTR("Velk.User\\more"), true}}) {
        EXPECT_EQ(has(HKEY_CURRENT_USER, entry.name), entry.user);
        EXPECT_EQ(has(HKEY_LOCAL_MACHINE, entry.name), !entry.user);
    }
}

TEST_F(MergedClasses, ValuesAreWrittenWhereTheUserHasTheKey) {
    fillBoth();
    set(HKEY_LOCAL_MACHINE, OLESTR("Velk.Machine"), nullptr, OLESTR("machine"));
    setText(merged(OLESTR("Velk.Both")), OLESTR("w"), OLESTR("x"));
    setText(merged(OLESTR("Velk.Machine")), OLESTR("w"), OLESTR("x"));
    EXPECT_EQ(textAt(HKEY_CURRENT_USER, classPath(OLESTR("Velk.Both")).c_str(), OLESTR("w")),
              OLESTR("x"));
    EXPECT_EQ(textAt(HKEY_LOCAL_MACHINE, classPath(OLESTR("Velk.Both")).c_str(), OLESTR("w")),
              OLESTR("#2"));
    EXPECT_EQ(textAt(HKEY_LOCAL_MACHINE, classPath(OLESTR("Velk.Machine")).c_str(), OLESTR("w")),
              OLESTR("x"));
    EXPECT_EQ(RegDeleteValueW(merged(OLESTR("Velk.Both")), OLESTR("m")), ERROR_SUCCESS)
        << "a value of the machine's alone";
}

TEST_F(MergedClasses, DeletingAKeyUncoversTheMachines) {
    fillBoth();
    Key const key = merged(OLESTR("Velk.Both"));
    EXPECT_EQ(RegDeleteKeyW(key, OLESTR("same")), ERROR_SUCCESS);
    EXPECT_FALSE(has(HKEY_CURRENT_USER, OLESTR("Velk.Both\\same")));
    EXPECT_TRUE(has(HKEY_LOCAL_MACHINE, OLESTR("Velk.Both\\same")));
    EXPECT_EQ(RegDeleteKeyW(key, OLESTR("same")), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyW(key, OLESTR("same")), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegDeleteTreeW(HKEY_CLASSES_ROOT, OLESTR("Velk.Both")), ERROR_SUCCESS);
    EXPECT_FALSE(has(HKEY_CURRENT_USER, OLESTR("Velk.Both")));
    EXPECT_FALSE(has(HKEY_LOCAL_MACHINE, OLESTR("Velk.Both")));
}

TEST(PredefinedKeys, StandWhereTheyBelong) {
    EXPECT_EQ(openStatus(HKEY_LOCAL_MACHINE, OLESTR("SOFTWARE\\Classes")), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(HKEY_CURRENT_CONFIG, OLESTR("")), ERROR_SUCCESS);
    auto const signExtended = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000001ULL));
    EXPECT_EQ(openStatus(signExtended, OLESTR("Software")), ERROR_SUCCESS);
    EXPECT_EQ(openStatus(reinterpret_cast<HKEY>(ULONG_PTR{0x80000099U}), OLESTR("Software")),
              ERROR_INVALID_HANDLE);

    auto const users = keyNames(HKEY_USERS);
    ASSERT_EQ(users.size(), 2u);
    setText(created(HKEY_CURRENT_USER, OLESTR("VelkUsersTest")), nullptr, OLESTR("here"));
    EXPECT_EQ(textAt(HKEY_USERS, (users[0] + OLESTR("\\VelkUsersTest")).c_str(), nullptr),
              OLESTR("here"));
    EXPECT_EQ(RegDeleteKeyW(HKEY_CURRENT_USER, OLESTR("VelkUsersTest")), ERROR_SUCCESS);

    for (HKEY const root : {HKEY_USERS, HKEY_LOCAL_MACHINE}) {
        Key key;
        EXPECT_EQ(RegCreateKeyExW(root, OLESTR("VelkTop\\x"), 0, nullptr, 0, KEY_ALL_ACCESS,
                                  nullptr, key.target(), nullptr),
                  ERROR_INVALID_PARAMETER);
        EXPECT_EQ(RegDeleteKeyW(root, OLESTR("")), ERROR_ACCESS_DENIED);
    }
    EXPECT_EQ(RegDeleteTreeW(HKEY_CLASSES_ROOT, nullptr), ERROR_ACCESS_DENIED);
}

}  // namespace
