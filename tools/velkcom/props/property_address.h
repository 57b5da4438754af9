/// Sets and properties as the command line names them.
#pragma once

#include <optional>
#include <string>

#include <windows.h>

#include <propidl.h>

namespace velk::velkcom {

/// The format id of a set: a well-known one by its name or short name without
/// regard to case, any by its id in braces. Throws UsageError.
FMTID setFromText(std::string const& text);

/// A property of a set.
struct PropertyAddress {
    std::optional<PROPID> id;
    /// Of a property that is to be found, or made, by its name.
    std::basic_string<OLECHAR> name;

    /// Valid as long as this is.
    PROPSPEC specifier() const;
};

/// Which property a key means. In the well-known sets without names of their
/// own a decimal number is an id, and so is a well-known name; everywhere else
/// the name of a property comes first, then the id of one that is there. What
/// is neither is a name.
/// \param set  may be null: a set without properties
PropertyAddress addressOf(REFFMTID setId, IPropertyStorage* set, std::string const& key);

/// The type of the property that is there; nothing when there is none.
std::optional<VARTYPE> storedType(IPropertyStorage& set, PropertyAddress const& address);

}  // namespace velk::velkcom
