#include <algorithm>
#include <cstring>

#include "conformance/storage_properties/property_set_file.h"

// PropVariantClear and PropVariantCopy. What is not given back is counted by the
// test program's own end, on the layer.

namespace {

using namespace velk::test;

template <typename Element>
Element* taskCopy(std::initializer_list<Element> elements) {
    auto* const made = static_cast<Element*>(CoTaskMemAlloc(elements.size() * sizeof(Element)));
    std::copy(elements.begin(), elements.end(), made);
    return made;
}

char* taskText(char const* text) {
    auto* const made = static_cast<char*>(CoTaskMemAlloc(std::strlen(text) + 1));
    std::strcpy(made, text);
    return made;
}

TEST(PropVariants, CopiesHoldTheirOwn) {
    PropVariant source;
    PROPVARIANT& value = *source.address();
    value.vt = VT_VECTOR | VT_VARIANT;
    value.capropvar.cElems = 3;
    PROPVARIANT text{}, block{}, bstr{};
    text.vt = VT_LPSTR;
    text.pszVal = taskText("text");
    block.vt = VT_CF;
    block.pclipdata = taskCopy({CLIPDATA{sizeof(LONG) + 2, 3, taskCopy<BYTE>({8, 9})}});
    bstr.vt = VT_BSTR;
    bstr.bstrVal = SysAllocString(OLESTR("bstr"));
    value.capropvar.pElems = taskCopy({text, block, bstr});
    PropVariant copy;
    ASSERT_EQ(PropVariantCopy(copy.put(), &value), S_OK);
    source.reset();
    ASSERT_EQ(copy.get().capropvar.cElems, 3u);
    auto const* const held = copy.get().capropvar.pElems;
    EXPECT_STREQ(held[0].pszVal, "text");
    EXPECT_EQ(held[1].pclipdata->ulClipFmt, 3);
    EXPECT_EQ(held[1].pclipdata->pClipData[1], 9);
    EXPECT_EQ(Text(held[2].bstrVal), OLESTR("bstr"));
}

TEST(PropVariants, OfUnknownTypesAreEmptiedWithAnError) {
    for (int const type : {0x123, VT_BYREF | VT_I4}) {
        PROPVARIANT value{};
        value.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(PropVariantClear(&value), STG_E_INVALIDPARAMETER) << type;
        EXPECT_EQ(value.vt, VT_EMPTY) << type;
    }
    PROPVARIANT odd{}, copy{};
    odd.vt = 0x123;
    EXPECT_EQ(PropVariantCopy(&copy, &odd), DISP_E_BADVARTYPE);
    EXPECT_EQ(PropVariantClear(nullptr), S_OK);
}

}  // namespace
