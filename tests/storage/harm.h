/// What a change took that was not its own.
#pragma once

#include <string>

#include "storage/compound_reader.h"
#include "storage/document_steps.h"

namespace velk::test {

/// The biggest stream in the root that has a name of its own and no set; none
/// when there is no such stream.
Text biggestStream(Elements const& elements);

/// Whether elements of others have the name, but for the case.
bool isSharedName(Elements const& elements, std::u16string const& path);

/// Elements that are lost, changed, new, or out of the way of a search, beside
/// those that the step changes. Empty when all is well.
std::string harmBy(Step const& step, Text const& stream, std::string const& before,
                   std::string const& now);

/// The same for the properties in the set that the step changes, all but those
/// that a step changes.
std::string lostProperties(Step const& step, std::string const& original, std::string const& now);

}  // namespace velk::test
