#include "conformance/storage_properties/property_set_file.h"
#include "support/expected_difference.h"

// Documents that our layer and Wine have written, each read on both systems.

namespace {

using namespace velk::test;

class Samples : public testing::TestWithParam<char const*> {
  protected:
    void SetUp() override {
        auto const file =
            std::filesystem::path(VELK_PROPERTY_SET_SAMPLES) / (GetParam() + std::string(".doc"));
        ASSERT_TRUE(std::filesystem::copy_file(file, place_.file())) << file;
        root_ = place_.open(look);
    }

    FilePlace place_;
    Storage root_;
};

/// Narrow and wide texts alike: both are ASCII.
std::string textOf(PROPVARIANT const& value) {
    if (value.vt == VT_LPSTR) return value.pszVal;
    if (value.vt != VT_LPWSTR) return "no text";
    std::string text;
    for (OLECHAR const* at = value.pwszVal; *at != 0; ++at) text += static_cast<char>(*at);
    return text;
}

TEST_P(Samples, SummaryIsRead) {
    auto const set = openSet(root_, summarySet);
    PropVariant read;
    EXPECT_EQ(get(set, byId(2), read), S_OK);
    EXPECT_EQ(textOf(read.get()), "A report");
    EXPECT_EQ(get(set, byId(14), read), S_OK);
    EXPECT_EQ(read.get().lVal, 3);
    EXPECT_EQ(get(set, byId(100), read), S_OK);
    EXPECT_EQ(read.get().ulVal, 4000000000U);
    EXPECT_EQ(get(set, byId(12), read), S_OK);
    EXPECT_EQ(read.get().vt, VT_FILETIME);
    EXPECT_EQ(read.get().filetime.dwHighDateTime, 0x1DA6EDCU);
    EXPECT_EQ(listing(set).size(), 4U);
}

void expectCustomValues(Storage const& root) {
    auto const set = openSet(root, customSet);
    PropVariant read;
    EXPECT_EQ(get(set, byId(2), read), S_OK);
    EXPECT_TRUE(read.get().vt == VT_LPWSTR &&
                Text(read.get().pwszVal) == OLESTR("Zo\u00eb \u017di\u017eka"));
    EXPECT_EQ(get(set, byId(3), read), S_OK);
    EXPECT_EQ(read.get().lVal, 10);
    EXPECT_EQ(get(set, byName(OLESTR("words")), read), S_OK);
}

TEST_P(Samples, UsersPropertiesAreRead) {
    if (GetParam() == std::string("layer")) {
        expectDifference(System::wine, "it reads one section only",
                         [&] { expectCustomValues(root_); });
    } else {
        expectCustomValues(root_);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Samples, testing::Values("layer", "wine"),
                         [](auto const& sample) { return std::string(sample.param); });

}  // namespace
