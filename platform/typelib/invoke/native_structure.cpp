#include "platform/typelib/invoke/native_structure.h"

#include "platform/typelib/owners.h"

namespace velk::typelib {

NativeStructure::NativeStructure(ULONG size, std::optional<NativeShape> const& shape) {
    require(size > 0, DISP_E_BADVARTYPE);
    type_.type = FFI_TYPE_STRUCT;
    if (size > mostRegisterBytes) {
        // Whole words, so that nothing in it asks for a register of its own.
        elements_.assign((size + 7) / 8, &ffi_type_uint64);
        type_.size = size;
        type_.alignment = 8;
    } else {
        require(shape.has_value(), DISP_E_BADVARTYPE);
        for (auto const& leaf : *shape) elements_.push_back(nativeTypeOf(leaf.kind));
    }
    elements_.push_back(nullptr);
    type_.elements = elements_.data();
    if (size > mostRegisterBytes) return;
    describe(*shape);
    require(type_.size == size, DISP_E_BADVARTYPE);
}

// Lays the numbers out as a compiler would, which is where they have to be.
void NativeStructure::describe(NativeShape const& shape) {
    std::vector<std::size_t> offsets(elements_.size());
    ffi_status const status = ffi_get_struct_offsets(FFI_DEFAULT_ABI, &type_, offsets.data());
    require(status == FFI_OK, DISP_E_BADVARTYPE);
    for (std::size_t i = 0; i < shape.size(); ++i) {
        require(offsets[i] == shape[i].offset, DISP_E_BADVARTYPE);
    }
}

NativeValue nativeStructure(NativeStructure const& structure, void* bytes) {
    NativeValue value = NativeValue::ofPointer(bytes);
    value.kind = NativeKind::structure;
    value.structure = &structure;
    return value;
}

}  // namespace velk::typelib
