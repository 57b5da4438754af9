#include "records.h"

#include <gtest/gtest.h>

namespace velk::test {

com::ComPtr<ITypeInfo> typeOfRecords(char const* name, bool bits32) {
    com::ComPtr<ITypeLib> library;
    auto const path = wide(bits32 ? VELK_RECORDS_TLB_32 : VELK_RECORDS_TLB);
    EXPECT_EQ(LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.put()), S_OK);
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        Value found;
        found->vt = VT_BSTR;
        library->GetDocumentation(static_cast<INT>(index), &found->bstrVal, nullptr, nullptr,
                                  nullptr);
        com::ComPtr<ITypeInfo> type;
        if (found.notation() != std::string("BSTR:") + name) continue;
        EXPECT_EQ(library->GetTypeInfo(index, type.put()), S_OK);
        return type;
    }
    ADD_FAILURE() << "no type " << name;
    return {};
}

com::ComPtr<IRecordInfo> recordNamed(char const* name, bool bits32) {
    com::ComPtr<IRecordInfo> info;
    EXPECT_EQ(GetRecordInfoFromTypeInfo(typeOfRecords(name, bits32).get(), info.put()), S_OK)
        << name;
    return info;
}

BSTR newText(char const* text) {
    return SysAllocString(wide(text).c_str());
}

}  // namespace velk::test
