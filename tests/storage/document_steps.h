/// Changes of a document as clients make them.
#pragma once

#include <string>
#include <vector>

#include "conformance/storage_properties/property_set_file.h"

namespace velk::test {

/// One change, which counts wholly or not at all.
struct Step {
    char const* name;
    /// `stream` is the one that changes beside the property sets are made in.
    HRESULT (*run)(IStorage& root, Text const& stream);
    /// The path of what it changes, with all below; none is `stream`.
    char16_t const* changes;
    /// What it leaves of a property: a number, a text's length, -1 for nothing.
    FMTID const* set = nullptr;
    PROPSPEC property = {};
    long expected = 0;
    enum class Clients {
        all,
        direct,     ///< others make a set together with its first property
        transacted  ///< several changes to direct ones
    } clients = Clients::all;

    /// What there is of the property.
    long measure(IStorage& root) const;
};

extern std::vector<Step> const steps;

/// The name that a step gives to another element.
inline constexpr char16_t renamedStream[] = u"renamed stream";

/// How a client opens a document.
enum class Way {
    transacted,  ///< what counts is what it commits
    direct,      ///< the end of the document commits too
    again        ///< as the first one; what fails is reverted and done anew
};

/// Opens a document, looks at it, makes a change and closes it. `whenFailed` is
/// called before a change is done anew.
HRESULT runStep(FilePlace const& place, Step const& step, Text const& stream, Way way,
                void (*whenFailed)());

}  // namespace velk::test
