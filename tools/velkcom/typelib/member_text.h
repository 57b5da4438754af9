/// Declarations of the members of one type.
#pragma once

#include <string>

#include <windows.h>

#include <oleauto.h>

namespace velk::velkcom {

/// Attributes, declaration and a closing remark with the vtable offset, each
/// function on two lines indented by `indent`.
std::string functionText(ITypeInfo* type, UINT index, std::string const& indent);

/// The same for a constant, a field or a property.
std::string variableText(ITypeInfo* type, UINT index, std::string const& indent);

/// One implemented or inherited type.
std::string implementedText(ITypeInfo* type, UINT index, std::string const& indent);

}  // namespace velk::velkcom
