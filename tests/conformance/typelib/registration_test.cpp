// Libraries written to the registry, found again and removed.

#include <gtest/gtest.h>

#include "shapes.h"
#include "support/expected_difference.h"

namespace velk::test {
namespace {

constexpr LCID german = 0x0407;

HRESULT pathOf(WORD major, WORD minor, LCID lcid, Wide& path) {
    BSTR text = nullptr;
    HRESULT const result = QueryPathOfRegTypeLib(shapesId(0x01), major, minor, lcid, &text);
    path = taken(text);
    // Some systems end the text with a zero of its own.
    while (!path.empty() && path.back() == 0) path.pop_back();
    return result;
}

class Registration : public testing::Test {
  protected:
    void SetUp() override {
        library_ = loadShapes();
        path_ = shapesPath();
        ASSERT_EQ(RegisterTypeLib(library_.get(), path_.data(), nullptr), S_OK);
    }
    void TearDown() override { UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64); }

    Owned<ITypeLib> library_;
    Wide path_;
};

TEST_F(Registration, IsFoundByVersionAndLanguage) {
    struct {
        WORD major, minor;
        LCID lcid;
        HRESULT expected;
    } const cases[] = {{1, 2, german, S_OK},
                       {1, 0, german, S_OK},
                       {1, 3, german, TYPE_E_LIBNOTREGISTERED},
                       {2, 0, german, TYPE_E_LIBNOTREGISTERED}};
    for (auto const& entry : cases) {
        Wide path;
        EXPECT_EQ(pathOf(entry.major, entry.minor, entry.lcid, path), entry.expected);
        EXPECT_EQ(path, entry.expected == S_OK ? path_ : Wide());
    }
}

TEST_F(Registration, LoadsTheSameLibrary) {
    ITypeLib* found = nullptr;
    ASSERT_EQ(LoadRegTypeLib(shapesId(0x01), 1, 2, german, &found), S_OK);
    EXPECT_EQ(found, library_.get());
    found->Release();
}

TEST_F(Registration, IsGoneAfterwards) {
    ASSERT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64), S_OK);
    ITypeLib* found = nullptr;
    EXPECT_EQ(LoadRegTypeLib(shapesId(0x01), 1, 2, german, &found), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(found, nullptr);
    expectDifference(System::wine, "a library without registration is an invalid argument", [] {
        EXPECT_EQ(UnRegisterTypeLib(shapesId(0x01), 1, 2, german, SYS_WIN64),
                  TYPE_E_REGISTRYACCESS);
    });
}

TEST_F(Registration, NeedsAKnownLibrary) {
    ITypeLib* found = nullptr;
    EXPECT_EQ(LoadRegTypeLib(shapesId(0xEE), 1, 0, 0, &found), TYPE_E_LIBNOTREGISTERED);
}

}  // namespace
}  // namespace velk::test
