#include <gtest/gtest.h>

#include "com/module.h"
#include "com/registration/registrar.h"
#include "com/utf.h"
#include "registry_table.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

constexpr char testKey[] = "Software\\VelkComTests";

std::string textBelow(char const* key) {
    return textOf(dumpRegistry(HKEY_CURRENT_USER, key), "\n");
}

TEST_F(ModuleTest, RegistersItsScriptResource) {
    std::string const expected =
        ": = 1:Größe\n:AppId = 1:{of the test}\n:Bytes = 3:00ff10\n"
        ":List = 7:6f006e0065000000740077006f0000000000\n:Module = 1:" +
        toUtf8(modulePath(moduleHandle())) + "\n:Number = 4:ffffffff\nSub\nSub: = 1:below";
    // Stale keys do not survive a second registration, nor anything the end.
    for (int round = 0; round < 2; ++round) {
        module.updateRegistry(101, true, false);
        EXPECT_EQ(textBelow(testKey), expected);
        writeText(HKEY_CURRENT_USER, std::string(testKey) + "\\Stale", "stale");
    }
    for (int round = 0; round < 2; ++round) {
        module.updateRegistry(101, false, false);
        EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, testKey));
        EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, "Software"));
    }
}

TEST_F(ModuleTest, RegistersCategoriesOfAClass) {
    static constexpr CategoryEntry categories[] = {
        {&libraryOfTests, false}, {&recordedInterface, true}, {nullptr, false}};
    constexpr char classKey[] = "Software\\Classes\\CLSID\\{6A1D9E04-27B3-4C58-A20F-7B3E914D65C8}";
    objects[1].registryScript = 101;
    objects[1].categories = categories;
    module.updateClass(objects[1], true, true);
    EXPECT_EQ(textBelow(classKey),
              "Implemented Categories\n"
              "Implemented Categories\\{3F0C6B52-8D21-4A77-9B6E-1055C27E410D}\n"
              "Required Categories\n"
              "Required Categories\\{D42E7F11-50C6-4B39-8E74-2FA806BD935A}");
    EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, testKey));
    module.updateClass(objects[1], false, true);
    EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, classKey)) << "the class's script writes it";
    EXPECT_EQ(textBelow(classKey), "");
    EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, testKey));
    deleteKey(HKEY_CURRENT_USER, classKey);
}

TEST_F(ModuleTest, AMissingScriptResourceIsAnError) {
    try {
        module.updateRegistry(999, true, false);
        FAIL() << "no error";
    } catch (Error const& error) {
        EXPECT_TRUE(FAILED(error.code()));
        EXPECT_NE(std::string(error.what()).find("resource 999"), std::string::npos);
    }
}

TEST(SystemRegistrar, KeepsKeysOfOthersBelow) {
    TextView const script = OLESTR("HKCU { NoRemove Software { VelkComTests { Own } } }");
    Registrar registrar;
    registrar.registerScript(script);
    writeText(HKEY_CURRENT_USER, std::string(testKey) + "\\Foreign", "theirs");
    registrar.unregisterScript(script);
    EXPECT_EQ(textBelow(testKey), "Foreign\nForeign: = 1:theirs");
    registrar.registerScript(OLESTR("HKCU { NoRemove Software { Delete VelkComTests } }"));
    EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, testKey));
}

}  // namespace
}  // namespace velk::com::test
