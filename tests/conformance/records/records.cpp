#include "records.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "support/value_notation.h"

namespace velk::test {

GUID recordsId(BYTE last) {
    return {0x5A0E7C31, 0x6B1D, 0x4C86, {0x8E, 0x24, 0x9D, 0x3F, 0x5B, 0x7A, 0x1C, last}};
}

Wide recordsPath() {
    return std::filesystem::path(VELK_RECORDS_TLB).string<OLECHAR>();
}

Owned<ITypeLib> loadRecords() {
    return loadLibrary(VELK_RECORDS_TLB);
}

Owned<IRecordInfo> recordNamed(OLECHAR const* name) {
    auto const library = loadRecords();
    auto const type = typeNamed(library.get(), name);
    IRecordInfo* info = nullptr;
    EXPECT_EQ(GetRecordInfoFromTypeInfo(type.get(), &info), S_OK);
    return Owned<IRecordInfo>(info);
}

VARIANT valueOf(IRecordInfo* info, void* record, VARTYPE type) {
    VARIANT value{};
    value.vt = type;
    value.pvRecord = record;
    value.pRecInfo = info;
    return value;
}

std::string textIn(BSTR text) {
    return text ? narrow(text, SysStringLen(text)) : "(null)";
}

BSTR newText(OLECHAR const* text) {
    return SysAllocString(text);
}

SAFEARRAY* peopleOf(std::initializer_list<LONG> ages) {
    auto const info = recordNamed(OLESTR("Person"));
    SAFEARRAY* const people =
        SafeArrayCreateVectorEx(VT_RECORD, 0, static_cast<ULONG>(ages.size()), info.get());
    EXPECT_NE(people, nullptr);
    auto* person = static_cast<Person*>(people->pvData);
    OLECHAR name[] = {'a', 0};
    for (LONG const age : ages) {
        *person++ = {newText(name), age};
        ++name[0];
    }
    return people;
}

}  // namespace velk::test
