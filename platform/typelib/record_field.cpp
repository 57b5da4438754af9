#include "platform/typelib/record_field.h"

#include <algorithm>
#include <cstring>

#include "platform/typelib/record_array.h"
#include "platform/typelib/invoke/vtable_call.h"

namespace velk::typelib {
namespace {

// Types of whole fields always have a kind: resolveField accepts no others.
NativeKind kindOf(VARTYPE type) {
    return nativeKindOf(type).value_or(NativeKind::nothing);
}

// The bits of a field as a value that owns what the field owns.
VARIANT bitsAt(VARTYPE type, std::byte const* place) {
    NativeValue bits;
    bits.kind = kindOf(type);
    std::memcpy(&bits.integer, place, sizeOf(bits.kind));
    VARIANT value;
    bits.store(type, value);
    return value;
}

void setBits(VARTYPE type, std::byte* place, VARIANT const& value) {
    auto const bits = NativeValue::ofVariant(kindOf(type), value);
    std::memcpy(place, &bits.integer, sizeOf(bits.kind));
}

bool isPointer(VARTYPE type) {
    return (type & VT_ARRAY) || type == VT_BSTR || type == VT_UNKNOWN || type == VT_DISPATCH;
}

bool ownsSomething(VARTYPE type) {
    return isPointer(type) || type == VT_VARIANT || type == VT_RECORD;
}

bool isRecord(VARIANT const& value) {
    return value.vt == VT_RECORD && value.pvRecord && value.pRecInfo;
}

// An object's pointer to the interface that a field is declared with.
void askForInterface(VARIANT& value, GUID const& id) {
    if (!value.punkVal) return;
    Reference<IUnknown> found;
    HRESULT const asked = value.punkVal->QueryInterface(id, reinterpret_cast<void**>(found.out()));
    require(SUCCEEDED(asked), DISP_E_TYPEMISMATCH);
    Reference<IUnknown>::adopt(std::exchange(value.punkVal, found.release()));
}

}  // namespace

ULONG FieldType::count() const {
    ULONG result = 1;
    for (auto const& bound : bounds) result *= bound.cElements;
    return result;
}

HRESULT RecordField::clearElement(std::byte* place) const noexcept {
    if (type_.type == VT_RECORD) return type_.record->RecordClear(place);
    if (!ownsSomething(type_.type)) return S_OK;
    VARIANT content = bitsAt(type_.type, place);
    HRESULT const cleared = VariantClear(&content);
    if (SUCCEEDED(cleared)) std::memset(place, 0, type_.size);
    return cleared;
}

HRESULT RecordField::clear(std::byte* record) const noexcept {
    HRESULT result = S_OK;
    if (!ownsSomething(type_.type)) return result;
    for (ULONG i = 0, count = type_.count(); i < count; ++i) {
        HRESULT const cleared = clearElement(record + offset_ + std::size_t{type_.size} * i);
        if (SUCCEEDED(result)) result = cleared;
    }
    return result;
}

void RecordField::copyElement(std::byte const* from, std::byte* to) const {
    if (type_.type == VT_RECORD) {
        check(type_.record->RecordCopy(const_cast<std::byte*>(from), to));
        return;
    }
    if (!ownsSomething(type_.type)) {
        std::memcpy(to, from, type_.size);
        return;
    }
    VARIANT const source = bitsAt(type_.type, from);
    // The copy of a null text would be an empty one.
    if (isPointer(type_.type) && !source.byref) return;
    VARIANT copy{};
    check(VariantCopy(&copy, &source));
    setBits(type_.type, to, copy);
}

void RecordField::copy(std::byte const* from, std::byte* to) const {
    std::size_t const size = type_.size;
    if (!ownsSomething(type_.type)) {
        std::memcpy(to + offset_, from + offset_, size * type_.count());
        return;
    }
    for (ULONG i = 0, count = type_.count(); i < count; ++i) {
        copyElement(from + offset_ + size * i, to + offset_ + size * i);
    }
}

void RecordField::requireValue() const {
    require(type_.type != VT_EMPTY, DISP_E_BADVARTYPE);
}

void RecordField::get(std::byte* record, VARIANT& value) const {
    requireValue();
    Value copy;
    if (type_.isFixedArray()) {
        copy->parray = elements(record);
        copy->vt = static_cast<VARTYPE>(VT_ARRAY | type_.type);
    } else if (type_.type == VT_RECORD) {
        check(type_.record->RecordCreateCopy(record + offset_, &copy->pvRecord));
        copy->pRecInfo = Reference<IRecordInfo>(type_.record).release();
        copy->vt = VT_RECORD;
    } else {
        VARIANT const content = bitsAt(type_.type, record + offset_);
        check(VariantCopyInd(copy.get(), &content));
    }
    check(VariantClear(&value));
    std::swap(value, *copy.get());
}

bool RecordField::takes(VARIANT const& value) const {
    if (type_.isFixedArray() || type_.type == VT_EMPTY) return false;
    if (type_.type == VT_VARIANT) return !(value.vt & VT_BYREF);
    if (type_.type == VT_RECORD) {
        return isRecord(value) && type_.record->IsMatchingType(value.pRecInfo);
    }
    if (value.vt != type_.type) return false;
    if (type_.type == (VT_ARRAY | VT_RECORD)) {
        return !value.parray || hasElementsOf(*value.parray, type_.elementId);
    }
    // Which interface a pointer is one to cannot be seen from it.
    return type_.interfaceId == GUID_NULL;
}

void RecordField::convert(VARIANT const& value, VARIANT& converted) const {
    if (type_.type == VT_VARIANT || type_.type == VT_RECORD) {
        check(VariantCopyInd(&converted, &value));
    } else {
        check(VariantChangeType(&converted, &value, 0, type_.type));
        if (type_.interfaceId != GUID_NULL) return askForInterface(converted, type_.interfaceId);
    }
    require(takes(converted), DISP_E_TYPEMISMATCH);
}

void RecordField::assign(std::byte* record, VARIANT const& value) const {
    requireValue();
    if (type_.isFixedArray()) return assignElements(record, value);
    Value converted;
    convert(value, *converted.get());
    take(record, *converted.get());
}

void RecordField::take(std::byte* record, VARIANT& value) const {
    std::byte* const place = record + offset_;
    check(clearElement(place));
    if (type_.type != VT_RECORD) {
        setBits(type_.type, place, value);
        VariantInit(&value);
        return;
    }
    std::memcpy(place, value.pvRecord, type_.size);
    // The content has moved; the block goes back to who made it.
    check(value.pRecInfo->RecordInit(value.pvRecord));
    check(VariantClear(&value));
}

SAFEARRAY* RecordField::elements(std::byte const* record) const {
    OwnedArray array(type_.type, type_.bounds, type_.record.get());
    std::byte const* const start = record + offset_;
    forEachElement(*array.get(), [&](std::size_t index, std::byte* element) {
        copyElement(start + index * type_.size, element);
    });
    return array.release();
}

void RecordField::assignElements(std::byte* record, VARIANT const& value) const {
    SAFEARRAY& array = arrayIn(value, type_.type);
    bool const records = type_.type == VT_RECORD;
    GUID id{};
    if (records) check(type_.record->GetGuid(&id));
    require(sameBounds(array, type_.bounds) && array.cbElements == type_.size &&
                (!records || hasElementsOf(array, id)),
            DISP_E_TYPEMISMATCH);
    // A copy of its own first: the array may hold what the field holds.
    OwnedArray copy(array);
    check(clear(record));
    std::byte* const start = record + offset_;
    forEachElement(*copy.get(), [&](std::size_t index, std::byte* element) {
        std::memcpy(start + index * type_.size, element, type_.size);
    });
    // The content has moved.
    std::memset(copy.get()->pvData, 0, std::size_t{type_.size} * type_.count());
}

}  // namespace velk::typelib
