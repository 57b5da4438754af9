/// The property sets of documents, as they are listed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "com/stored_properties.h"
#include "props/document.h"

namespace velk::velkcom {

struct ListedSet {
    FMTID id{};
    /// As an unsigned number; nothing when the set does not say.
    std::optional<unsigned> codePage;
    std::vector<com::StoredProperty> properties;
};

/// A document's sets, and why some or all cannot be read.
struct DocumentListing {
    std::string file;
    std::string error;
    std::vector<ListedSet> sets;
};

/// Reads all sets; those that cannot be read are named in the error.
DocumentListing listDocument(std::string file, Document const& document);

/// Lines for people.
std::string listingText(DocumentListing const& listing);

/// One JSON object, and the end of the line. Keys and values are those that a
/// script sees; what it does not see is null, as is a time that is none. Times
/// have the form that can be written back.
std::string listingJson(DocumentListing const& listing);

}  // namespace velk::velkcom
