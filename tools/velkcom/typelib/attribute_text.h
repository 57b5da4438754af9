/// Attribute lists of libraries, types and members, as declarations carry them.
#pragma once

#include <string>
#include <vector>

#include <windows.h>

#include <oleauto.h>

#include "com/owners.h"

namespace velk::velkcom {

using AttributeList = std::vector<std::string>;

/// Help string, contexts and their library of a documentation, where present.
void addDocumentation(AttributeList& list, ITypeInfo* type, MEMBERID member);
void addDocumentation(AttributeList& list, ITypeLib* library);

void closeCustomData(CUSTDATA& data) noexcept;
using CustomData = com::Owned<CUSTDATA, closeCustomData>;

/// Custom data, ordered by its identifiers.
void addCustomData(AttributeList& list, CUSTDATA const& data);

/// The same of what `fetch` gets from the interface `id` of an object that has it.
template <typename Extended, typename Interface, typename Fetch>
void addCustomData(AttributeList& list, Interface* object, REFIID id, Fetch const& fetch) {
    auto const extended = com::ComPtr(object).template query<Extended>(id);
    CustomData data;
    if (extended && SUCCEEDED(fetch(*extended, data.put()))) addCustomData(list, data.get());
}

AttributeList libraryFlagNames(unsigned flags);
AttributeList typeFlagNames(unsigned flags);
AttributeList functionFlagNames(unsigned flags);
AttributeList variableFlagNames(unsigned flags);
AttributeList parameterFlagNames(unsigned flags);
AttributeList implementedFlagNames(unsigned flags);

}  // namespace velk::velkcom
