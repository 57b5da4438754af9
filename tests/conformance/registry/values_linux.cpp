/// Strings that were stored without their end, which not every other system
/// of this interface completes.
#include "conformance/registry/test_key.h"

namespace {

using namespace velk::test;
using RegistryValues = RegistryTest;

TEST_F(RegistryValues, FetchedTextEndsInAZero) {
    // Two units and no zero: what follows them in memory must not matter.
    Bytes const open = {'a', 0, 'b', 0, 'x', 'x'};
    RegSetValueExW(root, OLESTR("open"), 0, REG_SZ, open.data(), 4);
    OLECHAR buffer[8];
    DWORD size = sizeof buffer;
    ASSERT_EQ(RegGetValueW(root, nullptr, OLESTR("open"), RRF_RT_REG_SZ, nullptr, buffer, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(size, 6u);
    EXPECT_EQ(Text(buffer), OLESTR("ab"));
    size = 4;
    EXPECT_EQ(RegGetValueW(root, nullptr, OLESTR("open"), RRF_RT_REG_SZ, nullptr, buffer, &size),
              ERROR_MORE_DATA);
    EXPECT_EQ(size, 6u);
    buffer[0] = OLESTR('z');
    size = sizeof buffer;
    EXPECT_EQ(RegGetValueW(root, nullptr, OLESTR("missing"), RRF_RT_ANY | RRF_ZEROONFAILURE,
                           nullptr, buffer, &size),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(buffer[0], 0);
}

TEST_F(RegistryValues, FetchedListsEndInTwoZeros) {
    setBytes(root, OLESTR("list"), REG_MULTI_SZ, {'a', 0});
    BYTE buffer[16];
    DWORD type = 0, size = sizeof buffer;
    ASSERT_EQ(RegGetValueW(root, nullptr, OLESTR("list"), RRF_RT_ANY, &type, buffer, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(Bytes(buffer, buffer + size), (Bytes{'a', 0, 0, 0, 0, 0}));
}

TEST_F(RegistryValues, OnlyKnownVariablesAreExpanded) {
    setBytes(root, OLESTR("path"), REG_EXPAND_SZ, bytesOf(OLESTR("5% %VELK_NO_SUCH% %PATH%%")));
    std::vector<OLECHAR> buffer(32768);
    auto size = static_cast<DWORD>(buffer.size() * sizeof(OLECHAR));
    ASSERT_EQ(
        RegGetValueW(root, nullptr, OLESTR("path"), RRF_RT_ANY, nullptr, buffer.data(), &size),
        ERROR_SUCCESS);
    Text const text = buffer.data();
    EXPECT_EQ(text.substr(0, 18), OLESTR("5% %VELK_NO_SUCH% "));
    EXPECT_EQ(text.back(), OLESTR('%'));
    EXPECT_EQ(text.find(OLESTR("%PATH%")), Text::npos);
}

}  // namespace
