/// Parameter types as ITypeInfo::Invoke deals with them.
#pragma once

#include "platform/typelib/interfaces/type_info.h"

namespace velk::typelib {

/// A type with aliases, enumerations and interfaces resolved.
struct InvokeType {
    /// An automation type, VT_ARRAY with its elements' type, VT_RECORD for a
    /// structure, or VT_VOID.
    VARTYPE type = VT_VOID;
    /// Levels of pointers beyond the one that an interface has by itself.
    int pointers = 0;
    /// The interface of a VT_UNKNOWN or VT_DISPATCH; null for any.
    GUID interfaceId{};
    /// The structure of a VT_RECORD, or of an array's elements; null for all else.
    Reference<TypeInfo> record;

    bool isInterface() const { return type == VT_UNKNOWN || type == VT_DISPATCH; }
};

/// Fails with a Failure, DISP_E_BADVARTYPE for a type that no late-bound
/// call can pass, TYPE_E_CIRCULARTYPE for an alias of itself.
InvokeType resolveForInvoke(TypeLibrary& library, TYPEDESC const& type);

}  // namespace velk::typelib
