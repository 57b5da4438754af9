/// Records filled with one kind of content each, for tests that treat all alike.
#pragma once

#include <gtest/gtest.h>

#include "support/fake_objects.h"
#include "records.h"

namespace velk::test {

// A record with content of one kind.
struct Content {
    OLECHAR const* record;
    void (*fill)(void* record, FakeDispatch& object);
    ULONG references;  ///< that the content holds to the object
    bool (*isEmpty)(void const* record);
    bool (*isCopy)(void const* copy, void const* original);
    bool wineReleases = true;
    bool wineCopies = true;
};

template <typename Structure>
Structure& as(void* record) {
    return *static_cast<Structure*>(record);
}
template <typename Structure>
Structure const& as(void const* record) {
    return *static_cast<Structure const*>(record);
}

class RecordContent : public testing::TestWithParam<Content> {
  protected:
    RecordContent() { GetParam().fill(record.get(), object); }

    ULONG held() const { return object.references - 1; }

    // Made first, because the record holds on to it to its end.
    FakeDispatch object;
    Record<void> record{GetParam().record};
};

inline std::string nameOfContent(testing::TestParamInfo<Content> const& content) {
    Wide const name(content.param.record);
    return std::string(name.begin(), name.end());
}

}  // namespace velk::test
