// Libraries written to the registry, found again and removed.

#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

constexpr LCID german = 0x0407;

HRESULT found(BYTE id, WORD major, WORD minor, ITypeLib* expected) {
    ComPtr<ITypeLib> library;
    HRESULT const result = LoadRegTypeLib(shapesId(id), major, minor, german, library.put());
    EXPECT_EQ(library.get(), result == S_OK ? expected : nullptr);
    return result;
}

TEST(Registration, IsFoundByVersionUntilItGoes) {
    auto const library = loadShapes();
    auto path = shapesPath();
    ASSERT_EQ(RegisterTypeLib(library.get(), path.data(), nullptr), S_OK);
    struct {
        BYTE id;
        WORD major, minor;
        HRESULT expected;
    } const rows[] = {{0x01, 1, 2, S_OK},
                      {0x01, 1, 0, S_OK},
                      {0x01, 1, 3, TYPE_E_LIBNOTREGISTERED},
                      {0x01, 2, 0, TYPE_E_LIBNOTREGISTERED},
                      {0x01, 0, 2, TYPE_E_LIBNOTREGISTERED},
                      {0xEE, 1, 0, TYPE_E_LIBNOTREGISTERED}};
    for (auto const& row : rows) {
        EXPECT_EQ(found(row.id, row.major, row.minor, library.get()), row.expected)
            << +row.id << ' ' << row.major << '.' << row.minor;
    }
    auto const unregister = [] {
        return UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64);
    };
    ASSERT_EQ(unregister(), S_OK);
    EXPECT_EQ(found(0x01, 1, 2, nullptr), TYPE_E_LIBNOTREGISTERED);
    expectDifference("unregister-absent-library",
                     [&] { EXPECT_EQ(unregister(), TYPE_E_REGISTRYACCESS); });
}

}  // namespace
}  // namespace velk::test
