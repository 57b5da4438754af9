/// The properties of one property set.
#pragma once

#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include <propidl.h>

#include "platform/storage/properties/bytes.h"
#include "platform/system/code_page.h"

namespace velk::platform::storage {

/// Bytes of a stream as it was read; sections keep looking into them.
using StreamImage = std::shared_ptr<std::vector<std::byte> const>;

/// A property as the section keeps it.
struct KeptProperty {
    KeptProperty() = default;
    KeptProperty(KeptProperty&&) = default;
    KeptProperty& operator=(KeptProperty&&) = default;

    PROPID id = 0;
    /// From where it begins; the type stands first. Empty where it would lie
    /// beyond the section.
    Bytes bytes;
    /// How many of them are no other property's.
    std::size_t own = 0;
    /// What `bytes` shows when the property was written here.
    std::vector<std::byte> made;
    /// Removed from the set, and not out of the table yet.
    bool isRemoved = false;

    /// Nothing where not even the type is there.
    std::optional<VARTYPE> type() const;
};

/// One section of a stream of property sets. Properties that are not changed
/// keep their bytes, readable or not.
class Section {
  public:
    /// A set with nothing but its code page.
    Section(REFFMTID formatId, unsigned codePage);

    /// Reads the table of a section that begins at `begin` of the stream and
    /// ends at `end` or before. What makes no sense is kept as it is, and is
    /// not readable.
    Section(REFFMTID formatId, StreamImage image, std::size_t begin, std::size_t end);

    Section(Section&&) = default;
    Section& operator=(Section&&) = default;

    FMTID const& formatId() const noexcept { return formatId_; }
    bool isReadable() const noexcept { return isReadable_; }
    /// How many bytes of the stream it was.
    std::size_t sizeAsRead() const noexcept { return raw_.size(); }
    /// 1252 when the set does not say.
    CodePage const& page() const noexcept { return page_; }
    /// Whether names differ by the case of letters.
    bool countsCase() const noexcept { return countsCase_; }

    /// In the order of the table; an id may be there twice, and the first
    /// counts.
    std::vector<KeptProperty> const& properties() const noexcept { return properties_; }
    KeptProperty const* find(PROPID id) const;

    /// Writes a property, as writeValue makes it, or the dictionary.
    void put(PROPID id, std::vector<std::byte> bytes);
    void remove(PROPID id);

    /// Appends the section to a stream.
    void write(ByteWriter& to) const;

  private:
    void readTable(Bytes section);
    void readSpecialProperties();
    /// How many of a property's bytes are its value, and what only it has.
    std::size_t keptSize(KeptProperty const& property) const;

    FMTID formatId_;
    StreamImage image_;
    Bytes raw_;
    bool isReadable_ = true;
    CodePage page_;
    bool countsCase_ = false;
    std::vector<KeptProperty> properties_;
    std::unordered_map<PROPID, std::size_t> byId_;
    bool hasIdsTwice_ = false;
};

}  // namespace velk::platform::storage
