/// Texts of types: names, pointers, arrays, references into other libraries.
#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

#include "com/owners.h"

namespace velk::velkcom {

/// What a library, a type or a member says of itself; empty where it does not.
com::LibraryAttributes attributesOf(ITypeLib* library);
com::TypeAttributes attributesOf(ITypeInfo* type);
com::FunctionDescription functionOf(ITypeInfo* type, UINT index);
com::VariableDescription variableOf(ITypeInfo* type, UINT index);

/// The name of the type that `reference` stands for in `type`, preceded by the
/// name of its library where that is another one; the result code in angle
/// brackets where it cannot be reached.
std::string referenceName(ITypeInfo* type, HREFTYPE reference);

/// The text of a type as a declaration writes it, the element's name aside.
std::string typeText(ITypeInfo* type, TYPEDESC const& description);

/// The name of a type, empty where it has none.
std::string typeName(ITypeInfo* type);

}  // namespace velk::velkcom
