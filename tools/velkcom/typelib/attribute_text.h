/// Attribute lists of libraries, types and members, as declarations carry them.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include <oleauto.h>

namespace velk::tools {

using AttributeList = std::vector<std::string>;

/// Help string, contexts and their library of a documentation, where present.
void addDocumentation(AttributeList& list, ITypeInfo* type, MEMBERID member);
void addDocumentation(AttributeList& list, ITypeLib* library);

/// Custom data, ordered by its identifiers; `data` is cleared.
void addCustomData(AttributeList& list, CUSTDATA& data);

AttributeList libraryFlagNames(unsigned flags);
AttributeList typeFlagNames(unsigned flags);
AttributeList functionFlagNames(unsigned flags);
AttributeList variableFlagNames(unsigned flags);
AttributeList parameterFlagNames(unsigned flags);
AttributeList implementedFlagNames(unsigned flags);

}  // namespace velk::tools
