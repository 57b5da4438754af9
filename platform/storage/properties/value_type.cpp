#include "platform/storage/properties/value_type.h"

namespace velk::platform::storage {

ValueType valueType(VARTYPE type) noexcept {
    constexpr std::size_t pointer = sizeof(void*);
    if ((type & VT_ARRAY) != 0) {
        bool const isPlain = (type & ~(VT_ARRAY | VT_TYPEMASK)) == 0;
        return {isPlain ? Form::array : Form::unknown, 0, 0};
    }
    switch (type) {
        case VT_EMPTY:
        case VT_NULL:
            return {Form::fixed, 0, 0};
        case VT_I1:
        case VT_UI1:
            return {Form::fixed, 1, 1};
        case VT_I2:
        case VT_UI2:
        case VT_BOOL:
            return {Form::fixed, 2, 2};
        case VT_I4:
        case VT_UI4:
        case VT_R4:
        case VT_ERROR:
            return {Form::fixed, 4, 4};
        case VT_INT:
        case VT_UINT:
            return {Form::fixed, 4, 0};
        case VT_I8:
        case VT_UI8:
        case VT_R8:
        case VT_CY:
        case VT_DATE:
        case VT_FILETIME:
            return {Form::fixed, 8, 8};
        case VT_DECIMAL:
            return {Form::fixed, sizeof(DECIMAL), 0};
        case VT_LPSTR:
            return {Form::byteText, 0, pointer};
        case VT_LPWSTR:
            return {Form::wideText, 0, pointer};
        case VT_BSTR:
            return {Form::bstr, 0, pointer};
        case VT_BLOB:
        case VT_BLOB_OBJECT:
        case VT_BSTR_BLOB:
            return {Form::blob, 0, 0};
        case VT_CF:
            return {Form::clipboard, 0, sizeof(CLIPDATA)};
        case VT_CLSID:
            return {Form::classId, 0, sizeof(CLSID)};
        case VT_STREAM:
        case VT_STREAMED_OBJECT:
        case VT_STORAGE:
        case VT_STORED_OBJECT:
        case VT_UNKNOWN:
        case VT_DISPATCH:
            return {Form::object, 0, 0};
        case VT_VERSIONED_STREAM:
            return {Form::versioned, 0, 0};
        case VT_VARIANT:
            return {Form::variant, 0, sizeof(PROPVARIANT)};
        default:
            return {};
    }
}

bool isValueType(VARTYPE type) noexcept {
    ValueType const found = valueType(elementType(type));
    if (isVector(type)) return found.elementSize != 0;
    return found.form != Form::unknown && found.form != Form::variant;
}

std::span<std::byte> fixedBytes(PROPVARIANT& value, ValueType const& type) noexcept {
    void* const place = type.size == sizeof(DECIMAL) ? static_cast<void*>(&value.decVal)
                                                     : static_cast<void*>(&value.bVal);
    return {static_cast<std::byte*>(place), type.size};
}

std::span<std::byte const> fixedBytes(PROPVARIANT const& value, ValueType const& type) noexcept {
    return fixedBytes(const_cast<PROPVARIANT&>(value), type);
}

}  // namespace velk::platform::storage
