#include "platform/storage/properties/section.h"

#include <algorithm>

#include "platform/storage/properties/value_reader.h"
#include "platform/storage/properties/value_writer.h"

namespace velk::platform::storage {
namespace {

constexpr unsigned defaultPage = 1252;
// The size of the section and the number of its properties.
constexpr std::size_t headerSize = 2 * sizeof(ULONG);
constexpr std::size_t tableEntrySize = 2 * sizeof(ULONG);
// Up to this product of properties and bytes a property may reach into the next
// one, as some programs have it.
constexpr std::size_t mostSharedBytes = std::size_t{64} << 20;

/// The number that a property with the ordinary type of its kind holds.
std::optional<LONG> smallNumber(KeptProperty const* property) {
    if (property == nullptr) return {};
    auto const type = property->type();
    ByteReader value(property->bytes);
    try {
        value.take(sizeof(ULONG));
        if (type == VT_I2 || type == VT_UI2) return value.read<USHORT>();
        if (type == VT_I4 || type == VT_UI4) return value.read<LONG>();
    } catch (Failure const&) {
        // There is a type and no number.
    }
    return {};
}

}  // namespace

std::optional<VARTYPE> KeptProperty::type() const {
    if (bytes.size() < sizeof(ULONG)) return {};
    return ByteReader(bytes).read<VARTYPE>();
}

Section::Section(REFFMTID formatId, unsigned codePage) : formatId_(formatId), page_(codePage) {
    PROPVARIANT value{};
    value.vt = VT_I2;
    value.iVal = static_cast<SHORT>(codePage);
    put(PID_CODEPAGE, writeValue(value, page_));
}

Section::Section(REFFMTID formatId, StreamImage image, std::size_t begin, std::size_t end)
    : formatId_(formatId), image_(std::move(image)), page_(defaultPage) {
    raw_ = Bytes(*image_).subspan(begin, end - begin);
    try {
        readTable(raw_);
        readSpecialProperties();
    } catch (Failure const&) {
        isReadable_ = false;
        properties_.clear();
        byId_.clear();
    }
}

void Section::readTable(Bytes section) {
    ByteReader from(section);
    auto const size = from.read<ULONG>();
    auto const count = from.read<ULONG>();
    require(count <= from.left() / tableEntrySize, malformedSet);
    // A size that has no room for the table is no size.
    std::size_t const tableEnd = headerSize + count * tableEntrySize;
    if (size >= tableEnd && size < section.size()) section = section.first(size);
    raw_ = section;
    properties_.resize(count);
    byId_.reserve(count);
    std::vector<std::size_t> offsets(count), starts;
    starts.reserve(count);
    for (ULONG i = 0; i < count; ++i) {
        properties_[i].id = from.read<PROPID>();
        offsets[i] = from.read<ULONG>();
        if (offsets[i] < section.size()) starts.push_back(offsets[i]);
    }
    std::ranges::sort(starts);
    bool const maySpread = count * section.size() <= mostSharedBytes;
    // In a big set only one property may have the same bytes.
    std::vector<bool> isTaken(maySpread ? 0 : starts.size());
    for (ULONG i = 0; i < count; ++i) {
        if (!byId_.emplace(properties_[i].id, i).second) hasIdsTwice_ = true;
        if (offsets[i] >= section.size()) continue;
        auto const next = std::ranges::upper_bound(starts, offsets[i]);
        if (!maySpread) {
            auto const last = static_cast<std::size_t>(next - starts.begin()) - 1;
            if (isTaken[last]) continue;
            isTaken[last] = true;
        }
        std::size_t const end = next != starts.end() ? *next : section.size();
        auto const bytes = section.subspan(offsets[i]);
        properties_[i].own = end - offsets[i];
        properties_[i].bytes = maySpread ? bytes : bytes.first(properties_[i].own);
    }
}

void Section::readSpecialProperties() {
    auto const page = static_cast<USHORT>(smallNumber(find(PID_CODEPAGE)).value_or(0));
    page_ = CodePage(page != 0 ? page : defaultPage);
    countsCase_ = smallNumber(find(PID_BEHAVIOR)) == LONG{PROPSET_BEHAVIOR_CASE_SENSITIVE};
}

KeptProperty const* Section::find(PROPID id) const {
    auto const found = byId_.find(id);
    return found == byId_.end() ? nullptr : &properties_[found->second];
}

void Section::put(PROPID id, std::vector<std::byte> bytes) {
    auto const [place, isNew] = byId_.emplace(id, properties_.size());
    if (isNew) properties_.emplace_back();
    KeptProperty& property = properties_[place->second];
    property.id = id;
    property.made = std::move(bytes);
    property.bytes = property.made;
    property.own = property.made.size();
    if (id == PID_CODEPAGE || id == PID_BEHAVIOR) readSpecialProperties();
}

void Section::remove(PROPID id) {
    auto const found = byId_.find(id);
    if (found == byId_.end()) return;
    properties_[found->second].isRemoved = true;
    byId_.erase(found);
    if (!hasIdsTwice_) return;
    for (KeptProperty& property : properties_) {
        if (property.id == id) property.isRemoved = true;
    }
}

std::size_t Section::keptSize(KeptProperty const& property) const {
    std::size_t size = property.own;
    if (property.id != PID_DICTIONARY && property.bytes.size() > property.own) {
        try {
            size = std::max(size, valueSize(property.bytes, property.own, page_));
        } catch (Failure const&) {
            // A value that cannot be read is kept up to the next one.
        }
    }
    return size;
}

void Section::write(ByteWriter& to) const {
    if (!isReadable_) {
        to.write(raw_);
        to.pad();
        return;
    }
    std::vector<KeptProperty const*> kept;
    for (KeptProperty const& property : properties_) {
        if (!property.isRemoved) kept.push_back(&property);
    }
    ByteWriter section;
    section.write(ULONG{0});
    section.write(static_cast<ULONG>(kept.size()));
    std::size_t const table = section.size();
    for (KeptProperty const* property : kept) {
        section.write(property->id);
        section.write(ULONG{0});
    }
    // Properties that were read from the same bytes go on sharing them, as many
    // as the longest needs.
    std::unordered_map<std::byte const*, std::size_t> sizes;
    for (KeptProperty const* property : kept) {
        std::size_t& size = sizes[property->bytes.data()];
        size = std::max(size, keptSize(*property));
    }
    std::unordered_map<std::byte const*, std::size_t> places;
    std::vector<std::size_t> offsets;
    for (KeptProperty const* property : kept) {
        std::byte const* const data = property->bytes.data();
        auto const [place, isNew] = places.emplace(data, section.size());
        if (isNew) {
            section.write(Bytes(data, sizes[data]));
            section.pad();
        }
        offsets.push_back(place->second);
    }
    for (std::size_t i = 0; i < kept.size(); ++i) {
        bool const isBeyond = kept[i]->bytes.empty();
        section.overwrite(table + i * tableEntrySize + sizeof(PROPID),
                          static_cast<ULONG>(isBeyond ? section.size() : offsets[i]));
    }
    section.overwrite(0, static_cast<ULONG>(section.size()));
    to.write(Bytes(section.bytes()));
}

}  // namespace velk::platform::storage
