#include "platform/typelib/invoke/vtable_call.h"

#include <cstring>
#include <vector>

#include <ffi.h>

#include "platform/typelib/invoke/native_structure.h"
#include "platform/typelib/owners.h"

namespace velk::typelib {
namespace {

// Structures that travel by value, described field by field: the convention of
// the system decides by the kinds of the fields how they do.
ffi_type* currencyFields[] = {&ffi_type_sint64, nullptr};
ffi_type currencyType{0, 0, FFI_TYPE_STRUCT, currencyFields};
ffi_type* decimalFields[] = {&ffi_type_uint16, &ffi_type_uint8,  &ffi_type_uint8,
                             &ffi_type_uint32, &ffi_type_uint64, nullptr};
ffi_type decimalType{0, 0, FFI_TYPE_STRUCT, decimalFields};
ffi_type* variantFields[] = {&ffi_type_uint16, &ffi_type_uint16, &ffi_type_uint16, &ffi_type_uint16,
                             &ffi_type_uint64, &ffi_type_uint64, nullptr};
ffi_type variantType{0, 0, FFI_TYPE_STRUCT, variantFields};

// Fills in sizes and alignments once, before threads share the descriptions.
bool structuresAreReady() {
    static bool const ready = [] {
        for (ffi_type* type : {&currencyType, &decimalType, &variantType}) {
            std::size_t offsets[8];
            if (ffi_get_struct_offsets(FFI_DEFAULT_ABI, type, offsets) != FFI_OK) return false;
        }
        return currencyType.size == sizeof(CY) && decimalType.size == sizeof(DECIMAL) &&
               variantType.size == sizeof(VARIANT);
    }();
    return ready;
}

}  // namespace

ffi_type* nativeTypeOf(NativeKind kind) {
    switch (kind) {
        case NativeKind::nothing:
            return &ffi_type_void;
        case NativeKind::signed8:
            return &ffi_type_sint8;
        case NativeKind::unsigned8:
            return &ffi_type_uint8;
        case NativeKind::signed16:
            return &ffi_type_sint16;
        case NativeKind::unsigned16:
            return &ffi_type_uint16;
        case NativeKind::signed32:
            return &ffi_type_sint32;
        case NativeKind::unsigned32:
            return &ffi_type_uint32;
        case NativeKind::signed64:
            return &ffi_type_sint64;
        case NativeKind::unsigned64:
            return &ffi_type_uint64;
        case NativeKind::real32:
            return &ffi_type_float;
        case NativeKind::real64:
            return &ffi_type_double;
        case NativeKind::pointer:
            return &ffi_type_pointer;
        case NativeKind::currency:
            return &currencyType;
        case NativeKind::decimal:
            return &decimalType;
        case NativeKind::variant:
            return &variantType;
        case NativeKind::structure:
            break;
    }
    fail(E_UNEXPECTED);
}

namespace {

ffi_type* typeOf(NativeValue const& value) {
    return value.structure ? value.structure->type() : nativeTypeOf(value.kind);
}

// Where the bits of a value stand.
void* placeOf(NativeValue& value) {
    return value.structure ? value.pointer : &value.integer;
}

}  // namespace

std::size_t sizeOf(NativeKind kind) {
    switch (kind) {
        case NativeKind::nothing:
            return 0;
        case NativeKind::signed8:
        case NativeKind::unsigned8:
            return 1;
        case NativeKind::signed16:
        case NativeKind::unsigned16:
            return 2;
        case NativeKind::signed32:
        case NativeKind::unsigned32:
        case NativeKind::real32:
            return 4;
        case NativeKind::decimal:
            return sizeof(DECIMAL);
        case NativeKind::variant:
            return sizeof(VARIANT);
        default:
            return 8;
    }
}

std::optional<NativeKind> nativeKindOf(VARTYPE type) {
    if (type & (VT_BYREF | VT_ARRAY)) return NativeKind::pointer;
    switch (type) {
        case VT_EMPTY:
        case VT_VOID:
            return NativeKind::nothing;
        case VT_I1:
            return NativeKind::signed8;
        case VT_UI1:
            return NativeKind::unsigned8;
        case VT_I2:
        case VT_BOOL:
            return NativeKind::signed16;
        case VT_UI2:
            return NativeKind::unsigned16;
        case VT_I4:
        case VT_INT:
        case VT_ERROR:
        case VT_HRESULT:
            return NativeKind::signed32;
        case VT_UI4:
        case VT_UINT:
            return NativeKind::unsigned32;
        case VT_I8:
        case VT_INT_PTR:
            return NativeKind::signed64;
        case VT_UI8:
        case VT_UINT_PTR:
            return NativeKind::unsigned64;
        case VT_R4:
            return NativeKind::real32;
        case VT_R8:
        case VT_DATE:
            return NativeKind::real64;
        case VT_CY:
            return NativeKind::currency;
        case VT_DECIMAL:
            return NativeKind::decimal;
        case VT_VARIANT:
            return NativeKind::variant;
        case VT_BSTR:
        case VT_DISPATCH:
        case VT_UNKNOWN:
        case VT_PTR:
        case VT_SAFEARRAY:
        case VT_LPSTR:
        case VT_LPWSTR:
            return NativeKind::pointer;
        default:
            return std::nullopt;
    }
}

NativeValue NativeValue::ofPointer(void* address) {
    NativeValue value;
    value.kind = NativeKind::pointer;
    value.pointer = address;
    return value;
}

NativeValue NativeValue::ofVariant(NativeKind kind, VARIANT const& source) {
    NativeValue value;
    value.kind = kind;
    if (kind == NativeKind::variant) {
        value.variant = source;
    } else if (kind == NativeKind::decimal) {
        value.decimal = source.decVal;
        // The type of the value stood in the reserved field.
        value.decimal.wReserved = 0;
    } else {
        std::memcpy(&value.integer, &source.llVal, sizeOf(kind));
    }
    return value;
}

void NativeValue::store(VARTYPE type, VARIANT& target) const {
    if (kind == NativeKind::variant) {
        target = variant;
        return;
    }
    VariantInit(&target);
    if (kind == NativeKind::decimal) {
        target.decVal = decimal;
    } else {
        std::memcpy(&target.llVal, &integer, sizeOf(kind));
    }
    target.vt = type;
}

void callFunction(void* address, std::span<NativeValue> arguments, NativeValue& result) {
    require(structuresAreReady(), E_UNEXPECTED);
    std::vector<ffi_type*> types;
    std::vector<void*> values;
    for (auto& argument : arguments) {
        require(argument.kind != NativeKind::nothing, DISP_E_BADVARTYPE);
        types.push_back(typeOf(argument));
        values.push_back(placeOf(argument));
    }
    ffi_cif call;
    ffi_status const status = ffi_prep_cif(
        &call, FFI_DEFAULT_ABI, static_cast<unsigned>(types.size()), typeOf(result), types.data());
    require(status == FFI_OK, DISP_E_BADVARTYPE);
    // Results narrower than a register come back as a whole register, whose low
    // bytes stand first on this machine.
    ffi_call(&call, FFI_FN(address), placeOf(result), values.data());
}

void callSlot(void* instance, std::size_t offset, std::span<NativeValue const> arguments,
              NativeValue& result) {
    std::vector<NativeValue> all;
    all.reserve(arguments.size() + 1);
    all.push_back(NativeValue::ofPointer(instance));
    all.insert(all.end(), arguments.begin(), arguments.end());
    auto* const vtable = *static_cast<std::byte**>(instance);
    void* function = nullptr;
    require(vtable, E_INVALIDARG);
    std::memcpy(&function, vtable + offset, sizeof function);
    require(function, E_INVALIDARG);
    callFunction(function, all, result);
}

}  // namespace velk::typelib
