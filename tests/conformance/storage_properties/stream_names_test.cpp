#include "conformance/storage_properties/property_set_file.h"

#ifndef CCH_MAX_PROPSTG_NAME
// mingw-w64's headers lack these.
extern "C" HRESULT WINAPI FmtIdToPropStgName(FMTID const* formatId, LPOLESTR name);
extern "C" HRESULT WINAPI PropStgNameToFmtId(LPOLESTR const name, FMTID* formatId);
#define CCH_MAX_PROPSTG_NAME 31
#endif

// The names of the streams that sets are kept in.

namespace {

using namespace velk::test;

struct Named {
    FMTID id;
    OLECHAR const* name;
};

TEST(StreamNames, FollowFromFormatIds) {
    FMTID const media = {
        0x64440492, 0x4C8B, 0x11D1, {0x8B, 0x70, 0x08, 0x00, 0x36, 0xB1, 0x1A, 0x03}};
    for (Named const& named : {Named{summarySet, OLESTR("\5SummaryInformation")},
                               Named{documentSet, OLESTR("\5DocumentSummaryInformation")},
                               Named{media, OLESTR("\5SebiesnrMkudrfcoIaamtykdDa")},
                               Named{GUID_NULL, OLESTR("\5AaaaaaaaAaaaaaaaAaaaaaaaAa")}}) {
        OLECHAR name[CCH_MAX_PROPSTG_NAME + 1] = {};
        EXPECT_EQ(FmtIdToPropStgName(&named.id, name), S_OK);
        FMTID id{};
        EXPECT_EQ(PropStgNameToFmtId(name, &id), S_OK);
        EXPECT_TRUE(id == named.id);
        EXPECT_EQ(Text(name), named.name);
    }
    OLECHAR name[CCH_MAX_PROPSTG_NAME + 1] = {};
    EXPECT_EQ(FmtIdToPropStgName(&customSet, name), S_OK);
    EXPECT_EQ(Text(name), OLESTR("\5DocumentSummaryInformation"));
    FMTID id{};
    EXPECT_EQ(PropStgNameToFmtId(const_cast<OLECHAR*>(OLESTR("\5short")), &id), STG_E_INVALIDNAME);
}

}  // namespace
