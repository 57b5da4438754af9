/// Calls of native functions whose types are known only at run time.
#pragma once

#include <optional>
#include <span>

#include "oleauto.h"

struct _ffi_type;

namespace velk::typelib {

class NativeStructure;

/// How a value travels to and from a native function.
enum class NativeKind {
    nothing,
    signed8,
    unsigned8,
    signed16,
    unsigned16,
    signed32,
    unsigned32,
    signed64,
    unsigned64,
    real32,
    real64,
    pointer,
    currency,
    decimal,
    variant,
    structure
};

/// The kind of an automation type; nothing for types that no function takes by
/// value. Arrays and everything by reference are pointers, VT_EMPTY and
/// VT_VOID are NativeKind::nothing.
std::optional<NativeKind> nativeKindOf(VARTYPE type);

/// How many bytes a value of the kind has; 8 for a structure's address.
std::size_t sizeOf(NativeKind kind);

/// The kind as the calling convention knows it. E_UNEXPECTED for a structure,
/// which has a description of its own.
_ffi_type* nativeTypeOf(NativeKind kind);

/// One argument or result. Holds its bits only: what they point at stays with
/// whoever put them here. Of a structure it holds the address, from which it is
/// passed, or at which it is returned.
struct NativeValue {
    NativeKind kind = NativeKind::nothing;
    NativeStructure const* structure = nullptr;
    union {
        LONGLONG integer;
        FLOAT real32;
        DOUBLE real64;
        void* pointer;
        CY currency;
        DECIMAL decimal;
        VARIANT variant;
    };

    NativeValue() : variant{} {}
    static NativeValue ofPointer(void* address);
    /// The bits of `value`, whose type has to be one of `kind`'s.
    static NativeValue ofVariant(NativeKind kind, VARIANT const& value);
    /// Puts the bits into `value`, whose type is set to `type`.
    void store(VARTYPE type, VARIANT& value) const;
};

/// Calls the function at `address`; `result.kind` says what it returns. Fails
/// with a Failure where the types cannot be called, and passes through
/// what the function throws.
void callFunction(void* address, std::span<NativeValue> arguments, NativeValue& result);

/// Calls a member function of `instance` through its vtable, `offset` in bytes.
/// The instance goes in front of the arguments. E_INVALIDARG for a slot without
/// a function.
void callSlot(void* instance, std::size_t offset, std::span<NativeValue const> arguments,
              NativeValue& result);

}  // namespace velk::typelib
