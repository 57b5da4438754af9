// Records in values in records, deeper than any stack holds.

#include <gtest/gtest.h>

#include "records.h"
#include "support/small_stack.h"

namespace velk::test {
namespace {

/// A record whose value is a record, and so on, or a list of one.
VARIANT nested(IRecordInfo* info, int depth, bool inLists) {
    VARIANT value{};
    SAFEARRAYBOUND bound{1, 0};
    for (int level = 0; level < depth; ++level) {
        VARIANT outer{};
        outer.vt = inLists ? VT_ARRAY | VT_RECORD : VT_RECORD;
        Memo* memo = nullptr;
        if (inLists) {
            outer.parray = SafeArrayCreateEx(VT_RECORD, 1, &bound, info);
            memo = static_cast<Memo*>(outer.parray->pvData);
        } else {
            outer.pvRecord = info->RecordCreate();
            outer.pRecInfo = info;
            info->AddRef();
            memo = static_cast<Memo*>(outer.pvRecord);
        }
        memo->any = value;
        value = outer;
    }
    return value;
}

int levelsOf(VARIANT const& value) {
    int levels = 0;
    for (VARIANT const* at = &value; at->vt != VT_EMPTY; ++levels) {
        bool const list = (at->vt & VT_ARRAY) != 0;
        at = &static_cast<Memo const*>(list ? at->parray->pvData : at->pvRecord)->any;
    }
    return levels;
}

TEST(NestedRecords, AreClearedAtAnyDepthAndCopiedWhileThereIsRoom) {
    auto const info = recordNamed("Memo");
    HRESULT const tooDeep = HRESULT_FROM_WIN32(ERROR_STACK_OVERFLOW);
    for (bool const inLists : {false, true}) {
        for (int const depth : {1, 15, 16, 17, 40, 64, 65, greatDepth}) {
            ASSERT_TRUE(withSmallStack([&] {
                VARIANT value = nested(info.get(), depth, inLists);
                VARIANT copy{};
                EXPECT_EQ(VariantCopy(&copy, &value), depth <= 64 ? S_OK : tooDeep);
                EXPECT_EQ(levelsOf(copy), depth <= 64 ? depth : 0);
                EXPECT_EQ(VariantClear(&copy), S_OK);
                EXPECT_EQ(levelsOf(value), depth);
                EXPECT_EQ(VariantClear(&value), S_OK);
            }));
        }
    }
}

}  // namespace
}  // namespace velk::test
