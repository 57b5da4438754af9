#include <gtest/gtest.h>

#include "com/module.h"
#include "com/utf.h"
#include "test_module.h"

namespace velk::com::test {
namespace {

using Text = std::basic_string<OLECHAR>;
using Bytes = std::vector<BYTE>;

constexpr OLECHAR testKey[] = OLESTR("Software\\VelkComTests");

bool keyExists(Text const& path) {
    RegistryKey key;
    return RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

Bytes valueOf(Text const& path, OLECHAR const* name, DWORD expectedType) {
    RegistryKey key;
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put()),
              ERROR_SUCCESS);
    Bytes data(1024);
    auto size = static_cast<DWORD>(data.size());
    DWORD type = REG_NONE;
    EXPECT_EQ(RegQueryValueExW(key.get(), name, nullptr, &type, data.data(), &size), ERROR_SUCCESS);
    EXPECT_EQ(type, expectedType);
    data.resize(size);
    return data;
}

std::string textOf(Text const& path, OLECHAR const* name) {
    Bytes const data = valueOf(path, name, REG_SZ);
    Text text;
    for (std::size_t i = 0; i + 3 < data.size(); i += 2) {
        text.push_back(static_cast<OLECHAR>(data[i] | data[i + 1] << 8));
    }
    return toUtf8(text);
}

TEST_F(ModuleTest, RegistersItsScriptResource) {
    module.updateRegistry(101, true, false);
    EXPECT_EQ(textOf(testKey, nullptr),
              "Gr\xC3\xB6\xC3\x9F"
              "e");
    EXPECT_EQ(textOf(testKey, OLESTR("Module")), toUtf8(modulePath(moduleHandle())));
    EXPECT_EQ(textOf(testKey, OLESTR("AppId")), "{of the test}");
    EXPECT_EQ(valueOf(testKey, OLESTR("Number"), REG_DWORD), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(valueOf(testKey, OLESTR("Bytes"), REG_BINARY), (Bytes{0x00, 0xFF, 0x10}));
    EXPECT_EQ(valueOf(testKey, OLESTR("List"), REG_MULTI_SZ),
              (Bytes{'o', 0, 'n', 0, 'e', 0, 0, 0, 't', 0, 'w', 0, 'o', 0, 0, 0, 0, 0}));
    EXPECT_EQ(textOf(Text(testKey) + OLESTR("\\Sub"), nullptr), "below");

    // Stale keys do not survive a second registration, nor anything the end.
    RegistryKey stale;
    Text const stalePath = Text(testKey) + OLESTR("\\Stale");
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, stalePath.c_str(), 0, nullptr, 0, KEY_WRITE,
                              nullptr, stale.put(), nullptr),
              ERROR_SUCCESS);
    stale.reset();
    module.updateRegistry(101, true, false);
    EXPECT_FALSE(keyExists(stalePath));
    EXPECT_TRUE(keyExists(testKey));
    module.updateRegistry(101, false, false);
    EXPECT_FALSE(keyExists(testKey));
    EXPECT_TRUE(keyExists(OLESTR("Software")));
    module.updateRegistry(101, false, false);
}

TEST_F(ModuleTest, RegistersCategoriesOfAClass) {
    static constexpr CategoryEntry categories[] = {
        {&libraryOfTests, false}, {&recordedInterface, true}, {nullptr, false}};
    Text const classKey =
        OLESTR("Software\\Classes\\CLSID\\{6A1D9E04-27B3-4C58-A20F-7B3E914D65C8}");
    Text const implemented =
        classKey + OLESTR("\\Implemented Categories\\{3F0C6B52-8D21-4A77-9B6E-1055C27E410D}");
    Text const required =
        classKey + OLESTR("\\Required Categories\\{D42E7F11-50C6-4B39-8E74-2FA806BD935A}");
    objects[1].registryScript = 101;
    objects[1].categories = categories;
    module.updateClass(objects[1], true, true);
    EXPECT_TRUE(keyExists(implemented));
    EXPECT_TRUE(keyExists(required));
    EXPECT_TRUE(keyExists(testKey));
    module.updateClass(objects[1], false, true);
    EXPECT_FALSE(keyExists(classKey + OLESTR("\\Implemented Categories")));
    EXPECT_FALSE(keyExists(classKey + OLESTR("\\Required Categories")));
    EXPECT_FALSE(keyExists(testKey));
    Registrar cleanup;
    cleanup.setPerUser(true);
    cleanup.unregisterScript(
        OLESTR("HKCR { NoRemove CLSID { {6A1D9E04-27B3-4C58-A20F-7B3E914D65C8} } }"));
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
    Text const foreign = Text(testKey) + OLESTR("\\Foreign");
    Text const script = OLESTR("HKCU { NoRemove Software { VelkComTests { Own } } }");
    Registrar registrar;
    registrar.registerScript(script);
    RegistryKey key;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, foreign.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                              key.put(), nullptr),
              ERROR_SUCCESS);
    key.reset();
    registrar.unregisterScript(script);
    EXPECT_FALSE(keyExists(Text(testKey) + OLESTR("\\Own")));
    EXPECT_TRUE(keyExists(foreign));
    registrar.registerScript(OLESTR("HKCU { NoRemove Software { Delete VelkComTests } }"));
    EXPECT_FALSE(keyExists(testKey));
}

}  // namespace
}  // namespace velk::com::test
