#include "props/document_listing.h"

#include <algorithm>

#include "com/error.h"
#include "com/utf.h"
#include "props/known_sets.h"
#include "props/value_text.h"
#include "text/names.h"
#include "text/result_codes.h"

namespace velk::velkcom {
namespace {

/// Most documents' listings are shorter.
constexpr std::size_t usualSize = 1024;

ListedSet listSet(REFFMTID id, IPropertyStorage& set) {
    ListedSet listed{id, codePageOf(set), {}};
    com::ComPtr<IEnumSTATPROPSTG> all;
    com::throwIfFailed(set.Enum(all.put()), "the properties cannot be listed");
    com::StoredProperty property;
    while (com::readNextProperty(*all.get(), set, property) == S_OK) {
        listed.properties.push_back(std::move(property));
        property = {};
    }
    return listed;
}

std::string setName(REFFMTID id) {
    auto const* const known = knownSet(id);
    return known != nullptr ? known->name : idText(id);
}

/// The property's own name, or its well-known one, or none.
std::optional<std::string> nameOf(ListedSet const& set, com::StoredProperty const& property) {
    if (property.name) return com::toUtf8(*property.name);
    auto const* const known = knownSet(set.id);
    auto const* const found = known != nullptr ? known->find(property.id) : nullptr;
    return found != nullptr ? std::optional<std::string>(found->name) : std::nullopt;
}

/// On one line: other lines' ends would look like the listing's own.
void appendOnOneLine(std::string& out, std::string_view text) {
    auto const isOther = [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\t'; };
    for (;;) {
        auto const end = std::ranges::find_if(text, isOther);
        out.append(text.begin(), end);
        if (end == text.end()) return;
        out += *end == '\n' ? "\\n" : *end == '\r' ? "\\r" : "?";
        text = text.substr(static_cast<std::size_t>(end - text.begin()) + 1);
    }
}

void appendQuoted(std::string& out, std::string_view text) {
    constexpr char digits[] = "0123456789abcdef";
    auto const isOther = [](char c) {
        return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
    };
    out += '"';
    for (;;) {
        auto const end = std::ranges::find_if(text, isOther);
        out.append(text.begin(), end);
        if (end == text.end()) break;
        if (*end == '"' || *end == '\\') {
            out.append(1, '\\').append(1, *end);
        } else {
            auto const byte = static_cast<unsigned char>(*end);
            out.append("\\u00").append(1, digits[byte >> 4]).append(1, digits[byte & 15]);
        }
        text = text.substr(static_cast<std::size_t>(end - text.begin()) + 1);
    }
    out += '"';
}

void appendQuotedOrNull(std::string& out, std::optional<std::string> const& text) {
    if (text) {
        appendQuoted(out, *text);
    } else {
        out += "null";
    }
}

/// Appends what a script sees; times are those of valueText.
struct JsonValue {
    std::string& out;
    PROPVARIANT const& value;

    void operator()(std::monostate) const { out += "null"; }
    void operator()(double number) const {
        bool const isNumber = number - number == 0;
        out += isNumber ? valueText(value) : "null";
    }
    void operator()(std::int32_t number) const { out += std::to_string(number); }
    void operator()(bool isTrue) const { out += isTrue ? "true" : "false"; }
    void operator()(std::basic_string<OLECHAR> const& text) const {
        if (value.vt == VT_FILETIME) {
            auto const time = valueText(value);
            return appendQuotedOrNull(out, time.empty() ? std::nullopt : std::optional(time));
        }
        appendQuoted(out, com::toUtf8(text));
    }
    void operator()(com::ByteText const& text) const {
        appendQuoted(out, com::toUtf8(com::fromUtf8Leniently(text.bytes)));
    }
};

void appendProperty(std::string& out, ListedSet const& set, com::StoredProperty const& property) {
    auto const name = nameOf(set, property);
    std::string const id = std::to_string(property.id);
    out += "{\"key\": ";
    appendQuoted(out, property.name ? *name : id);
    out.append(", \"id\": ").append(id).append(", \"name\": ");
    appendQuotedOrNull(out, name);
    out += ", \"type\": ";
    appendQuoted(out, typeName(property.type));
    out += ", \"value\": ";
    std::visit(JsonValue{out, property.value.get()}, com::readScriptForm(property.value.get()));
    out += "}";
}

void appendSet(std::string& out, ListedSet const& set) {
    auto const* const known = knownSet(set.id);
    out += "{\"name\": ";
    appendQuotedOrNull(out,
                       known != nullptr ? std::optional<std::string>(known->name) : std::nullopt);
    out += ", \"formatId\": ";
    appendQuoted(out, idText(set.id));
    out += ", \"codePage\": ";
    out += set.codePage ? std::to_string(*set.codePage) : "null";
    out += ", \"properties\": [";
    for (std::size_t i = 0; i < set.properties.size(); ++i) {
        if (i != 0) out += ", ";
        appendProperty(out, set, set.properties[i]);
    }
    out += "]}";
}

}  // namespace

DocumentListing listDocument(std::string file, Document const& document) {
    DocumentListing listing{std::move(file), {}, {}};
    auto const addError = [&](std::string const& text) {
        listing.error += (listing.error.empty() ? "" : "; ") + text;
    };
    try {
        for (FMTID const& id : document.sets()) {
            try {
                auto const set = document.set(id);
                if (set) {
                    listing.sets.push_back(listSet(id, *set.get()));
                } else if (id != FMTID_UserDefinedProperties) {
                    // An empty stream, or a storage.
                    addError(setName(id) + ": what has its name is no property set");
                }
            } catch (com::Error const& error) {
                addError(setName(id) + ": " + withMeaning(error));
            }
        }
    } catch (com::Error const& error) {
        addError(withMeaning(error));
    }
    return listing;
}

std::string listingText(DocumentListing const& listing) {
    std::string text;
    text.reserve(usualSize);
    appendOnOneLine(text, listing.file);
    text += "\n";
    for (ListedSet const& set : listing.sets) {
        auto const* const known = knownSet(set.id);
        text += "  ";
        if (known != nullptr) text.append(known->name).append(" ");
        text += idText(set.id);
        if (set.codePage) text += ", code page " + std::to_string(*set.codePage);
        text += "\n";
        for (auto const& property : set.properties) {
            text.append("    ").append(std::to_string(property.id)).append("  ");
            appendOnOneLine(text, nameOf(set, property).value_or("-"));
            text.append("  ").append(typeName(property.type)).append("  ");
            appendOnOneLine(text, valueText(property.value.get()));
            text += "\n";
        }
    }
    return text;
}

std::string listingJson(DocumentListing const& listing) {
    std::string out;
    out.reserve(usualSize);
    out += "{\"file\": ";
    appendQuoted(out, com::toUtf8(com::fromUtf8Leniently(listing.file)));
    out += ", \"error\": ";
    appendQuotedOrNull(out, listing.error.empty() ? std::nullopt : std::optional(listing.error));
    out += ", \"sets\": [";
    for (std::size_t i = 0; i < listing.sets.size(); ++i) {
        if (i != 0) out += ", ";
        appendSet(out, listing.sets[i]);
    }
    return out + "]}\n";
}

}  // namespace velk::velkcom
