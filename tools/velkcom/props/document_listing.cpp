#include "props/document_listing.h"

#include "com/error.h"
#include "com/utf.h"
#include "props/known_sets.h"
#include "props/value_text.h"

namespace velk::velkcom {
namespace {

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

std::string idText(REFFMTID id) {
    OLECHAR text[40] = {};
    StringFromGUID2(id, text, 40);
    return com::toUtf8(text);
}

/// The property's own name, or its well-known one, or none.
std::optional<std::string> nameOf(ListedSet const& set, com::StoredProperty const& property) {
    if (property.name) return com::toUtf8(*property.name);
    auto const* const known = knownSet(set.id);
    auto const* const found = known != nullptr ? known->find(property.id) : nullptr;
    return found != nullptr ? std::optional<std::string>(found->name) : std::nullopt;
}

/// On one line: other lines' ends would look like the listing's own.
std::string oneLine(std::string const& text) {
    std::string line;
    for (char const c : text) {
        if (static_cast<unsigned char>(c) >= 0x20) {
            line += c;
        } else if (c == '\n') {
            line += "\\n";
        } else if (c == '\r') {
            line += "\\r";
        } else {
            line += c == '\t' ? '\t' : '?';
        }
    }
    return line;
}

void appendQuoted(std::string& out, std::string const& text) {
    constexpr char digits[] = "0123456789abcdef";
    out += '"';
    for (char const c : text) {
        auto const byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20) {
            out += "\\u00";
            out += digits[byte >> 4];
            out += digits[byte & 15];
        } else {
            out += c;
        }
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

/// Appends what a script sees.
struct JsonValue {
    std::string& out;
    PROPVARIANT const& value;

    void operator()(std::monostate) const { out += "null"; }
    void operator()(double number) const {
        bool const isNumber = number - number == 0;
        out += isNumber ? valueText(value) : "null";
    }
    template <typename Number>
    void operator()(Number const&) const {
        out += valueText(value);
    }
    void operator()(std::basic_string<OLECHAR> const& text) const {
        appendQuoted(out, com::toUtf8(text));
    }
    void operator()(com::ByteText const& text) const {
        appendQuoted(out, com::toUtf8(com::fromUtf8Leniently(text.bytes)));
    }
};

void appendProperty(std::string& out, ListedSet const& set, com::StoredProperty const& property) {
    out += "{\"key\": ";
    appendQuoted(out, com::toUtf8(property.key()));
    out += ", \"id\": " + std::to_string(property.id) + ", \"name\": ";
    appendQuotedOrNull(out, nameOf(set, property));
    out += ", \"type\": ";
    appendQuoted(out, typeName(property.type));
    out += ", \"value\": ";
    std::visit(JsonValue{out, property.value.get()}, com::readScriptValue(property.value.get()));
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
    try {
        for (FMTID const& id : document.sets()) {
            if (auto const set = document.set(id)) listing.sets.push_back(listSet(id, *set.get()));
        }
    } catch (com::Error const& error) {
        listing.error = error.what();
    }
    return listing;
}

std::string listingText(DocumentListing const& listing) {
    std::string text = oneLine(listing.file) + "\n";
    for (ListedSet const& set : listing.sets) {
        auto const* const known = knownSet(set.id);
        text += "  " + (known != nullptr ? known->name + std::string(" ") : "") + idText(set.id);
        if (set.codePage) text += ", code page " + std::to_string(*set.codePage);
        text += "\n";
        for (auto const& property : set.properties) {
            auto const name = nameOf(set, property);
            text += "    " + std::to_string(property.id) + "  " + oneLine(name.value_or("-")) +
                    "  " + typeName(property.type) + "  " +
                    oneLine(valueText(property.value.get())) + "\n";
        }
    }
    return text;
}

std::string listingJson(DocumentListing const& listing) {
    std::string out = "{\"file\": ";
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
