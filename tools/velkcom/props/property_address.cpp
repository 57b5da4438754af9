#include "props/property_address.h"

#include <algorithm>
#include <charconv>

#include "com/stored_properties.h"
#include "com/utf.h"
#include "props/known_sets.h"
#include "usage_error.h"

namespace velk::velkcom {
namespace {

using Text = std::basic_string<OLECHAR>;

Text wideKey(std::string const& key) {
    auto const wide = com::fromUtf8(key);
    if (!wide) throw UsageError("the KEY is not valid UTF-8");
    if (wide->empty()) throw UsageError("the KEY is empty");
    return *wide;
}

std::optional<PROPID> decimal(std::string const& text) {
    PROPID id = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return id;
}

bool isNameOf(std::string const& text, char const* name) {
    auto const left = com::fromUtf8(text), right = com::fromUtf8(name);
    return left && right && com::equalIgnoringCase(*left, *right);
}

}  // namespace

FMTID setFromText(std::string const& text) {
    for (KnownSet const& known : knownSets()) {
        if (isNameOf(text, known.name) || isNameOf(text, known.shortName)) return known.id;
    }
    FMTID id{};
    auto const wide = com::fromUtf8(text);
    bool const isId = text.starts_with("{") && wide && SUCCEEDED(IIDFromString(wide->c_str(), &id));
    if (!isId) throw UsageError("there is no property set \"" + text + "\"");
    return id;
}

PROPSPEC PropertyAddress::specifier() const {
    PROPSPEC made{};
    made.ulKind = id ? PRSPEC_PROPID : PRSPEC_LPWSTR;
    if (id) {
        made.propid = *id;
    } else {
        // The interface takes a pointer to changeable text and changes nothing.
        made.lpwstr = const_cast<LPOLESTR>(name.c_str());
    }
    return made;
}

std::optional<VARTYPE> storedType(IPropertyStorage& set, PropertyAddress const& address) {
    com::PropVariant value;
    PROPSPEC const specifier = address.specifier();
    if (set.ReadMultiple(1, &specifier, value.put()) != S_OK) return {};
    return value.get().vt;
}

PropertyAddress addressOf(REFFMTID setId, IPropertyStorage* set, std::string const& key) {
    PropertyAddress named{{}, wideKey(key)};
    auto const number = decimal(key);
    auto const* const known = knownSet(setId);
    if (known != nullptr && !known->isNamed) {
        if (auto const* const property = known->find(key)) return {property->id, {}};
        if (number) return {number, {}};
    }
    bool const isName = set == nullptr || storedType(*set, named);
    if (isName || !number) return named;
    PropertyAddress const numbered{number, {}};
    return storedType(*set, numbered) ? numbered : named;
}

}  // namespace velk::velkcom
