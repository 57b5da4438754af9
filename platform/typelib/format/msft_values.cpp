// Values and custom data of a library in the MSFT format.

#include <algorithm>

#include "platform/automation/variant_type.h"
#include "platform/typelib/format/msft_tables.h"
#include "platform/typelib/owners.h"

namespace velk::typelib::msft {
namespace {

// A value of at most 26 bits is stored in place of its offset.
constexpr DWORD inlineMark = 0x80000000;
constexpr unsigned inlineTypeShift = 26;
constexpr DWORD inlineTypeMask = 0x1f;
constexpr DWORD inlineValueMask = 0x03ffffff;

// How many bytes a type takes in the value table; 0 where it cannot stand there.
std::size_t storedSize(VARTYPE type) {
    if (type == VT_HRESULT || type == VT_UNKNOWN || type == VT_DISPATCH) return 4;
    if (type == VT_BSTR || type == VT_INT_PTR || type == VT_UINT_PTR) return 0;
    std::size_t const size = platform::sizeOfType(type);
    return size <= sizeof(LONGLONG) ? size : 0;
}

bool holdsPointer(VARTYPE type) {
    return type == VT_BSTR || type == VT_UNKNOWN || type == VT_DISPATCH;
}

}  // namespace

VARIANT* Tables::value(DWORD stored) {
    if (stored == absent) return nullptr;
    auto const known = values_.find(stored);
    if (known != values_.end()) return known->second;
    VARIANT* const value = stored & inlineMark ? inlineValue(stored) : readValue(stored);
    return values_.emplace(stored, value).first->second;
}

VARIANT* Tables::inlineValue(DWORD stored) {
    auto* value = model_.makeOne<VARIANT>();
    auto const type = static_cast<VARTYPE>(stored >> inlineTypeShift & inlineTypeMask);
    VariantInit(value);
    if (storedSize(type) == 0 && type != VT_NULL && type != VT_EMPTY) return value;
    value->vt = type;
    // A pointer in a file can only be the null one.
    if (!holdsPointer(type)) value->lVal = static_cast<LONG>(stored & inlineValueMask);
    return value;
}

VARIANT* Tables::readValue(DWORD offset) {
    auto const& table = segment(values);
    auto* value = model_.makeOne<VARIANT>();
    VariantInit(value);
    VARTYPE const type = table.u16(offset);
    std::size_t const position = std::size_t{offset} + 2;
    if (type == VT_BSTR) {
        DWORD const length = table.u32(position);
        value->vt = VT_BSTR;
        if (length == absent) return value;
        Bstr text(decode(table.text(position + 4, length)));
        model_.clearAtEnd(value);
        value->bstrVal = text.release();
        return value;
    }
    std::size_t const size = storedSize(type);
    if (size == 0) return value;
    auto const bytes = table.part(position, size);
    value->vt = type;
    if (!holdsPointer(type)) std::memcpy(&value->llVal, bytes.data(), size);
    return value;
}

CustomData Tables::customData(DWORD offset) {
    if (offset == absent) return {};
    auto const known = customData_.find(offset);
    if (known != customData_.end()) return known->second;
    auto const& table = segment(customDataLinks);
    std::vector<CustomItem> items;
    // Chains may share their ends; the budget ends the ones that run in a circle.
    for (DWORD at = offset; at != absent; at = table.u32(std::size_t{at} + 8)) {
        require(customItemsLeft_-- > 0, TYPE_E_INVDATAREAD);
        CustomItem item{guid(table.u32(at)), {}};
        if (VARIANT const* stored = value(table.u32(std::size_t{at} + 4))) item.value = *stored;
        items.push_back(item);
    }
    auto const kept = model_.makeArray<CustomItem>(items.size());
    std::copy(items.begin(), items.end(), kept.begin());
    return customData_.emplace(offset, kept).first->second;
}

}  // namespace velk::typelib::msft
