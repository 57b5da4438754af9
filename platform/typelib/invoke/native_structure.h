/// Structures that travel to and from native functions by value.
#pragma once

#include <optional>
#include <vector>

#include <ffi.h>

#include "platform/typelib/invoke/vtable_call.h"

namespace velk::typelib {

/// One number inside a structure.
struct NativeLeaf {
    ULONG offset = 0;  ///< in bytes from the structure's start
    NativeKind kind = NativeKind::nothing;
};
using NativeShape = std::vector<NativeLeaf>;

/// The greatest structure that registers can hold, in bytes. A larger one goes
/// through memory, whatever it is made of.
constexpr ULONG mostRegisterBytes = 16;

/// What a structure is made of, as the calling convention asks. Immutable.
class NativeStructure {
  public:
    /// @param size   of the structure in bytes
    /// @param shape  its numbers by their offsets; not read for more than
    ///               mostRegisterBytes bytes
    ///
    /// Fails with a Failure, DISP_E_BADVARTYPE for a structure of no size,
    /// of unknown or of packed content, which cannot be told how it travels.
    NativeStructure(ULONG size, std::optional<NativeShape> const& shape);
    NativeStructure(NativeStructure const&) = delete;
    NativeStructure& operator=(NativeStructure const&) = delete;

    /// For the call that a NativeValue with this structure is part of.
    ffi_type* type() const { return &type_; }

  private:
    void describe(NativeShape const& shape);

    std::vector<ffi_type*> elements_;
    mutable ffi_type type_{};
};

/// A structure whose bytes are at `bytes`. Both have to outlive the call.
NativeValue nativeStructure(NativeStructure const& structure, void* bytes);

}  // namespace velk::typelib
