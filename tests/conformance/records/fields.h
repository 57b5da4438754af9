/// One record with fields of every type, and values for them.
#pragma once

#include <gtest/gtest.h>

#include "support/fake_objects.h"
#include "support/value_notation.h"
#include "records.h"

namespace velk::test {

struct FieldCase {
    char const* name;
    char const* content;
    bool wineReads = true;
};
/// A value for each field that a single VARIANT writes down, in its own type.
inline constexpr FieldCase fieldContents[] = {
    {"i1", "I1:-5"},
    {"ui1", "UI1:250"},
    {"i2", "I2:-300"},
    {"ui2", "UI2:65000"},
    {"i4", "I4:-70000"},
    {"ui4", "UI4:4000000000"},
    {"i8", "I8:-5000000000"},
    {"ui8", "UI8:18446744073709551615"},
    {"native", "INT:-8"},
    {"unsignedNative", "UINT:9"},
    {"single", "R4:1.5"},
    {"real", "R8:-2.25"},
    {"money", "CY:1.25"},
    {"day", "DATE:2.25"},
    {"truth", "BOOL:-1"},
    {"code", "ERROR:80070005"},
    {"text", "BSTR:text"},
    {"dispatch", "DISPATCH:null", false},
    {"any", "I2:12", false},
    {"exact", "DECIMAL:1.50"},
    {"rank", "I4:40000", false},
    {"price", "I4:99", false},
};

class RecordFields : public testing::Test {
  protected:
    // Made first, because the record holds on to it to its end.
    FakeDispatch object;
    Record<Everything> record{OLESTR("Everything")};

    HRESULT get(char const* name, VARIANT* value) {
        return record.info->GetField(record.get(), wide(name).c_str(), value);
    }
    HRESULT put(char const* name, VARIANT* value, ULONG flags = INVOKE_PROPERTYPUTREF) {
        return record.info->PutField(flags, record.get(), wide(name).c_str(), value);
    }
    HRESULT putNoCopy(char const* name, VARIANT* value) {
        return record.info->PutFieldNoCopy(INVOKE_PROPERTYPUT, record.get(), wide(name).c_str(),
                                           value);
    }
    std::string content(char const* name) {
        Value value;
        EXPECT_EQ(get(name, &value), S_OK) << name;
        std::string const result = value.notation();
        // Wine lends the record's own text.
        if (value->vt == VT_BSTR && value->bstrVal == record->text) VariantInit(&value);
        return result;
    }
};

}  // namespace velk::test
